(comment) @comment
(attribute_list) @attribute

(namespace_declaration name: (_) @name) @scope.namespace
; Heads that an error has cut from their bodies
(ERROR "namespace" @definition.namespace . (_) @name . "{" @body (#set! only-documented))
(ERROR "class" @definition.class . (identifier) @name "{" @body)
(file_scoped_namespace_declaration name: (_) @package)

(class_declaration name: (identifier) @name body: (_)? @body) @definition.class
(record_declaration name: (identifier) @name body: (_)? @body) @definition.class
(struct_declaration name: (identifier) @name body: (_)? @body) @definition.struct
(interface_declaration name: (identifier) @name body: (_)? @body) @definition.interface
(enum_declaration name: (identifier) @name body: (_)? @body) @definition.enum
(enum_member_declaration name: (identifier) @name @export) @definition.constant
(delegate_declaration name: (identifier) @name) @definition.type
(method_declaration name: (identifier) @name body: (_)? @body) @definition.method
(constructor_declaration name: (identifier) @name body: (_)? @body) @definition.method
(destructor_declaration name: (identifier) @name body: (_)? @body) @definition.method
(local_function_statement name: (identifier) @name body: (_)? @body) @definition.function
(property_declaration name: (identifier) @name accessors: (_)? @body) @definition.property
(event_field_declaration (variable_declaration (variable_declarator name: (identifier) @name))) @definition.field
(field_declaration (modifier) @_const (variable_declaration (variable_declarator name: (identifier) @name))
  (#eq? @_const "const")) @definition.constant
(field_declaration (variable_declaration (variable_declarator name: (identifier) @name))) @definition.field
(lambda_expression) @scope.local

(class_declaration (modifier) @export name: (identifier) @name (#eq? @export "public")) @definition.class
(record_declaration (modifier) @export name: (identifier) @name (#eq? @export "public")) @definition.class
(struct_declaration (modifier) @export name: (identifier) @name (#eq? @export "public")) @definition.struct
(interface_declaration (modifier) @export name: (identifier) @name (#eq? @export "public")) @definition.interface
(enum_declaration (modifier) @export name: (identifier) @name (#eq? @export "public")) @definition.enum
(delegate_declaration (modifier) @export name: (identifier) @name (#eq? @export "public")) @definition.type
(method_declaration (modifier) @export name: (identifier) @name (#eq? @export "public")) @definition.method
(constructor_declaration (modifier) @export name: (identifier) @name (#eq? @export "public")) @definition.method
(property_declaration (modifier) @export name: (identifier) @name (#eq? @export "public")) @definition.property
(field_declaration (modifier) @export (variable_declaration (variable_declarator name: (identifier) @name))
  (#eq? @export "public")) @definition.field
(interface_declaration body: (declaration_list "{" @access.public))

(invocation_expression function: (identifier) @reference.call)
(invocation_expression function: (member_access_expression expression: (_) @qualifier name: (identifier) @reference.call))
(invocation_expression function: (member_access_expression expression: (_) @qualifier
  name: (generic_name (identifier) @reference.call)))
(invocation_expression function: (generic_name (identifier) @reference.call))
(object_creation_expression type: (identifier) @reference.call)
(object_creation_expression type: (generic_name (identifier) @reference.call))
(base_list (identifier) @reference.inherit)
(base_list (generic_name (identifier) @reference.inherit))
(base_list (qualified_name qualifier: (_) @qualifier name: (identifier) @reference.inherit))
(parameter type: (identifier) @reference.type)
(variable_declaration type: (identifier) @reference.type)
(type_argument_list (identifier) @reference.type)
(attribute name: (identifier) @reference.type)

(using_directive !name (identifier) @module) @import
(using_directive !name (qualified_name) @module) @import
(using_directive name: (identifier) @alias (_) @module .) @import
