local json = require("json")

local M = {}

--- Limit of all.
LIMIT = 3

--- Makes one.
-- @param name who
function M.new(name)
  local inner = 1
  return setmetatable({}, name)
end

function M:run(a) return self.helper:call(a) end

local function hidden() return M.new(1) end

M.arrow = function(x) return x end

return M
