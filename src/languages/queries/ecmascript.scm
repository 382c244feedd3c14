; What JavaScript and TypeScript share.

(comment) @comment
(decorator) @attribute

; Definitions

(function_declaration name: (identifier) @name body: (_) @body) @definition.function
(generator_function_declaration name: (identifier) @name body: (_) @body) @definition.function
(arrow_function) @scope.local
(function_expression) @scope.local

(lexical_declaration (variable_declarator name: (identifier) @name
  value: [(arrow_function body: (_) @body) (function_expression body: (_) @body)
          (generator_function body: (_) @body)])) @definition.function
(variable_declaration (variable_declarator name: (identifier) @name
  value: [(arrow_function body: (_) @body) (function_expression body: (_) @body)])) @definition.function
(lexical_declaration (variable_declarator name: (identifier) @name value: (class body: (_) @body))) @definition.class
(lexical_declaration (variable_declarator name: (identifier) @name
  value: (call_expression function: (identifier) @_require)) (#eq? @_require "require")) @definition.none
(variable_declaration (variable_declarator name: (identifier) @name
  value: (call_expression function: (identifier) @_require)) (#eq? @_require "require")) @definition.none
(lexical_declaration kind: "const" (variable_declarator name: (identifier) @name)) @definition.constant
(lexical_declaration kind: "let" (variable_declarator name: (identifier) @name)) @definition.variable
(variable_declaration (variable_declarator name: (identifier) @name)) @definition.variable

(class_body (method_definition name: [(property_identifier) (private_property_identifier) (string)] @name
  body: (_) @body) @definition.method)
(class_body (method_definition name: (private_property_identifier) @name @hidden) @definition.method)
(object (method_definition name: [(property_identifier) (string)] @name body: (_) @body) @definition.method
  (#not-any-of? @name "get" "set"))
(pair key: (property_identifier) @name
  value: (object . (method_definition name: (property_identifier) @_accessor))
  (#any-of? @_accessor "get" "set")) @definition.property

; A function given to a member, as in `Reply.prototype.send = function () {}`
(expression_statement (assignment_expression
  left: (member_expression
    object: (member_expression object: (_) @qualifier property: (property_identifier) @_prototype)
    property: (property_identifier) @name)
  right: [(arrow_function body: (_) @body) (function_expression body: (_) @body)])
  (#eq? @_prototype "prototype")) @definition.method
(expression_statement (assignment_expression
  left: (member_expression object: [(identifier) (member_expression)] @qualifier property: (property_identifier) @name)
  right: [(arrow_function body: (_) @body) (function_expression body: (_) @body)])
  (#not-any-of? @qualifier "exports" "module.exports" "module")) @definition.method
(expression_statement (assignment_expression
  left: (member_expression object: (_) @_exports property: (property_identifier) @name @export)
  right: [(arrow_function body: (_) @body) (function_expression body: (_) @body)])
  (#any-of? @_exports "exports" "module.exports")) @definition.function
(expression_statement (assignment_expression
  left: (member_expression object: (this) property: (property_identifier) @name)
  right: [(arrow_function body: (_) @body) (function_expression body: (_) @body)])) @definition.method

; Functions of an object that the module holds or exports
(pair key: (property_identifier) @name
  value: [(arrow_function body: (_) @body) (function_expression body: (_) @body)]
  (#set! only-at-top)) @definition.method

; Exports

(export_statement declaration: (_) @wrapped) @wrapper @export
(export_statement value: (_) @wrapped) @wrapper @export
(export_statement value: (identifier) @export.name)
(export_clause (export_specifier name: (identifier) @export.name))
(class_body "{" @access.public)
(object "{" @access.public)

(assignment_expression left: (member_expression) @_exports right: (identifier) @export.name
  (#any-of? @_exports "module.exports" "module.exports.default" "exports.default"))
(assignment_expression left: (member_expression object: (_) @_exports) right: (identifier) @export.name
  (#any-of? @_exports "module.exports" "exports"))
(assignment_expression left: (member_expression) @_exports right: (object (shorthand_property_identifier) @export.name)
  (#eq? @_exports "module.exports"))
(assignment_expression left: (member_expression) @_exports right: (object (pair value: (identifier) @export.name))
  (#eq? @_exports "module.exports"))

; Uses

(call_expression function: (identifier) @reference.call (#not-eq? @reference.call "require"))
(call_expression function: (member_expression object: (_) @qualifier property: (property_identifier) @reference.call))
(decorator (identifier) @reference.call)
(new_expression constructor: (identifier) @reference.call)
(new_expression constructor: (member_expression object: (_) @qualifier property: (property_identifier) @reference.call))

; Imports

(import_statement (import_clause (identifier) @alias) source: (string) @module) @import
(import_statement (import_clause (namespace_import (identifier) @alias)) source: (string) @module) @import
(import_statement (import_clause (named_imports (import_specifier name: (_) @name !alias)))
  source: (string) @module) @import
(import_statement (import_clause (named_imports (import_specifier name: (_) @name alias: (_) @alias)))
  source: (string) @module) @import
(import_statement . source: (string) @module) @import
(export_statement (export_clause (export_specifier name: (_) @name !alias)) source: (string) @module) @import
(export_statement (export_clause (export_specifier name: (_) @name alias: (_) @alias)) source: (string) @module) @import
(export_statement . "*" source: (string) @module) @import
(export_statement . (namespace_export (_) @alias) source: (string) @module) @import
(variable_declarator name: (identifier) @alias
  value: (call_expression function: (identifier) @_require arguments: (arguments . (string) @module .))
  (#eq? @_require "require")) @import
(variable_declarator name: (object_pattern [(shorthand_property_identifier_pattern) @name
                                            (pair_pattern key: (_) @name value: (identifier) @alias)])
  value: (call_expression function: (identifier) @_require arguments: (arguments . (string) @module .))
  (#eq? @_require "require")) @import
(expression_statement
  (call_expression function: (identifier) @_require arguments: (arguments . (string) @module .))
  (#eq? @_require "require")) @import
(member_expression
  object: (call_expression function: (identifier) @_require arguments: (arguments . (string) @module .))
  property: (property_identifier) @name
  (#eq? @_require "require")) @import
(call_expression
  function: (call_expression function: (identifier) @_require arguments: (arguments . (string) @module .))
  (#eq? @_require "require")) @import
(call_expression function: (import) arguments: (arguments . (string) @module .)) @import
