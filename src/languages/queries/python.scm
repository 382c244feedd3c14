(comment) @comment
(decorator) @attribute

; Definitions

(class_definition name: (identifier) @name body: (block) @body) @definition.class
(function_definition name: (identifier) @name body: (block) @body) @definition.function
(lambda) @scope.local

(expression_statement (assignment left: (identifier) @name)
  (#not-eq? @name "__all__")) @definition.variable
(expression_statement (assignment left: (pattern_list (identifier) @name))) @definition.variable
(type_alias_statement left: (type (identifier) @name)) @definition.type

(class_definition body: (block . (expression_statement (string) @docstring)))
(function_definition body: (block . (expression_statement (string) @docstring)))

(assignment left: (identifier) @_all right: [(list (string (string_content) @export.name))
                                              (tuple (string (string_content) @export.name))]
  (#eq? @_all "__all__") (#set! exclusive))
(augmented_assignment left: (identifier) @_all right: (list (string (string_content) @export.name))
  (#eq? @_all "__all__") (#set! exclusive))

; Uses

(call function: (identifier) @reference.call)
(call function: (attribute object: (_) @qualifier attribute: (identifier) @reference.call))
(decorator (identifier) @reference.call)
(decorator (attribute object: (_) @qualifier attribute: (identifier) @reference.call))

(class_definition superclasses: (argument_list (identifier) @reference.inherit))
(class_definition superclasses: (argument_list
  (attribute object: (_) @qualifier attribute: (identifier) @reference.inherit)))
(class_definition superclasses: (argument_list (subscript value: (identifier) @reference.inherit)))
(class_definition superclasses: (argument_list
  (subscript value: (attribute object: (_) @qualifier attribute: (identifier) @reference.inherit))))

(type (identifier) @reference.type)
(type (attribute object: (_) @qualifier attribute: (identifier) @reference.type))
(type (generic_type (identifier) @reference.type))
(type (binary_operator (identifier) @reference.type))
(type (binary_operator (attribute object: (_) @qualifier attribute: (identifier) @reference.type)))
(type (subscript value: (identifier) @reference.type))
(except_clause (identifier) @reference.type)
(except_clause (as_pattern (identifier) @reference.type))
(except_clause (tuple (identifier) @reference.type))

; Imports

(import_statement name: (dotted_name) @module) @import
(import_statement name: (aliased_import name: (dotted_name) @module alias: (identifier) @alias)) @import
(import_from_statement module_name: (_) @module name: (dotted_name) @name) @import
(import_from_statement module_name: (_) @module
  name: (aliased_import name: (dotted_name) @name alias: (identifier) @alias)) @import
(import_from_statement module_name: (_) @module (wildcard_import) @name) @import
