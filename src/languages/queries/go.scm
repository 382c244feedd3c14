(comment) @comment
(package_clause (package_identifier) @package)

(function_declaration name: (identifier) @name body: (_)? @body) @definition.function
(method_declaration receiver: (parameter_list (parameter_declaration
    type: [(type_identifier) @qualifier
           (pointer_type [(type_identifier) @qualifier (generic_type type: (type_identifier) @qualifier)])
           (generic_type type: (type_identifier) @qualifier)]))
  name: (field_identifier) @name body: (_)? @body) @definition.method
(func_literal) @scope.local

(type_declaration . "type" . (type_spec name: (type_identifier) @name type: (struct_type (field_declaration_list) @body)) .) @definition.struct
(type_declaration . "type" . (type_spec name: (type_identifier) @name type: (interface_type "{" @body)) .) @definition.interface
(type_spec name: (type_identifier) @name type: (struct_type (field_declaration_list) @body)) @definition.struct
(type_spec name: (type_identifier) @name type: (interface_type "{" @body)) @definition.interface
(type_declaration . "type" . (type_spec name: (type_identifier) @name) .) @definition.type
(type_spec name: (type_identifier) @name) @definition.type
(type_alias name: (type_identifier) @name) @definition.type

(field_declaration name: (field_identifier) @name) @definition.field
(method_elem name: (field_identifier) @name) @definition.method

(const_declaration . "const" . (const_spec name: (identifier) @name) .) @definition.constant
(const_spec name: (identifier) @name) @definition.constant
(var_declaration . "var" . (var_spec name: (identifier) @name) .) @definition.variable
(var_spec name: (identifier) @name) @definition.variable

(call_expression function: (identifier) @reference.call)
(call_expression function: (selector_expression operand: (_) @qualifier field: (field_identifier) @reference.call))
(call_expression function: (parenthesized_expression (identifier) @reference.call))
(type_conversion_expression type: (type_identifier) @reference.type)

(type_identifier) @reference.type
(qualified_type package: (_) @qualifier name: (type_identifier) @reference.type)
(field_declaration !name type: (type_identifier) @reference.inherit)
(field_declaration !name type: (qualified_type package: (_) @qualifier name: (type_identifier) @reference.inherit))

(import_spec !name path: (_) @module) @import
(import_spec name: (_) @alias path: (_) @module) @import
