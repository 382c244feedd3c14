require 'json'
require_relative "other"

# Tools of all kinds.
module Tools
  LIMIT = 3

  # A widget.
  class Widget < Base::Thing
    include Comparable
    attr_reader :name, :size

    # Makes one.
    def initialize(name, size: 1)
      @name = name
      helper(name).call
    end

    def self.build(*args)
      new(*args)
    end

    def ==(other) = name == other.name

    private

    def secret; end
  end
end

def broken(
end

def top_level
  Tools::Widget.build
end
