(comment) @comment

(function_declaration name: [(identifier) (dot_index_expression)] @name body: (_)? @body) @definition.function
(function_declaration "local" @hidden name: (identifier) @name) @definition.function
(function_declaration name: (method_index_expression table: (_) @qualifier method: (identifier) @name)
  body: (_)? @body) @definition.method
(assignment_statement (variable_list name: [(identifier) (dot_index_expression)] @name)
  (expression_list value: (function_definition body: (_)? @body))) @definition.function
(chunk (variable_declaration (assignment_statement (variable_list name: (identifier) @name)
  (expression_list value: (function_call name: (identifier) @_require)))) @definition.none
  (#eq? @_require "require"))
(chunk (assignment_statement (variable_list name: (identifier) @name)) @definition.variable)
(chunk (variable_declaration (assignment_statement (variable_list name: (identifier) @name @hidden))) @definition.variable)
(function_definition) @scope.local

(function_call name: (identifier) @reference.call (#not-eq? @reference.call "require"))
(function_call name: (dot_index_expression table: (_) @qualifier field: (identifier) @reference.call))
(function_call name: (method_index_expression table: (_) @qualifier method: (identifier) @reference.call))

(function_call name: (identifier) @_require arguments: (arguments . (string) @module) (#eq? @_require "require")) @import
