(comment) @comment

(class name: (_) @name body: (_)? @body) @definition.class
(module name: (_) @name body: (_)? @body) @definition.module
(method name: (_) @name body: (_)? @body) @definition.function
(singleton_method name: (_) @name body: (_)? @body) @definition.method
(assignment left: (constant) @name) @definition.constant
(alias name: (identifier) @name) @definition.method
(singleton_class) @scope.type

(call method: (identifier) @_attribute arguments: (argument_list (simple_symbol) @name)
  (#any-of? @_attribute "attr_accessor" "attr_reader" "attr_writer" "cattr_accessor" "mattr_accessor")) @definition.property
(body_statement (identifier) @access.private (#any-of? @access.private "private" "protected"))
(body_statement (identifier) @access.public (#eq? @access.public "public"))
(call method: (identifier) @hidden arguments: (argument_list (method name: (_) @name) @definition.function)
  (#any-of? @hidden "private" "protected"))

(call !receiver method: (identifier) @reference.call
  (#not-any-of? @reference.call "require" "require_relative" "include" "extend" "prepend"))
(call receiver: (_) @qualifier method: (identifier) @reference.call)
(superclass (constant) @reference.inherit)
(superclass (scope_resolution scope: (_) @qualifier name: (constant) @reference.inherit))
(call !receiver method: (identifier) @_include arguments: (argument_list (constant) @reference.inherit)
  (#any-of? @_include "include" "extend" "prepend"))
(call receiver: (constant) @reference.type)

(call !receiver method: (identifier) @_require arguments: (argument_list . (string) @module)
  (#any-of? @_require "require" "require_relative" "load")) @import
