(comment) @comment

(function_definition name: (word) @name body: (_) @body) @definition.function
(program (variable_assignment name: (variable_name) @name) @definition.variable)
(program (declaration_command (variable_assignment name: (variable_name) @name)) @definition.variable)

(command name: (command_name (word) @_source) . argument: [(word) (string) (raw_string)] @module
  (#any-of? @_source "source" ".")) @import
(command name: (command_name (word) @reference.call) (#not-any-of? @reference.call "source" "."))
