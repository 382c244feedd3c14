(class_declaration name: (type_identifier) @name body: (_) @body) @definition.class
(abstract_class_declaration name: (type_identifier) @name body: (_) @body) @definition.class
(interface_declaration name: (type_identifier) @name body: (_) @body) @definition.interface
(type_alias_declaration name: (type_identifier) @name) @definition.type
(enum_declaration name: (identifier) @name body: (_) @body) @definition.enum
(enum_body name: (property_identifier) @name @definition.constant)
(enum_body (enum_assignment name: (property_identifier) @name) @definition.constant)
(internal_module name: (_) @name body: (_) @body) @definition.namespace
(module name: [(identifier) @name (nested_identifier) @name (string (string_fragment) @name)] body: (_) @body) @definition.module

; Overloads and members without a body
(function_signature name: (identifier) @name) @definition.function
(method_signature name: (property_identifier) @name) @definition.method
(abstract_method_signature name: (property_identifier) @name) @definition.method
(property_signature name: (property_identifier) @name) @definition.property

(public_field_definition name: (property_identifier) @name
  value: [(arrow_function body: (_) @body) (function_expression body: (_) @body)]) @definition.method
(public_field_definition name: (property_identifier) @name) @definition.field
(public_field_definition name: (private_property_identifier) @name @hidden) @definition.field
(public_field_definition (accessibility_modifier) @hidden name: (_) @name
  (#not-eq? @hidden "public")) @definition.field
(method_definition (accessibility_modifier) @hidden name: (_) @name (#not-eq? @hidden "public")) @definition.method

(ambient_declaration (_) @wrapped) @wrapper
(export_statement (ambient_declaration (_) @wrapped)) @wrapper @export
(expression_statement (internal_module) @wrapped) @wrapper
(interface_body "{" @access.public)
(enum_body "{" @access.public)
; What a declaration file declares inside a module is visible unless the module is left out of it
(module body: (statement_block "{" @access.public))

(class_heritage (extends_clause value: (identifier) @reference.inherit))
(class_heritage (extends_clause
  value: (member_expression object: (_) @qualifier property: (property_identifier) @reference.inherit)))
(class_heritage (implements_clause (type_identifier) @reference.inherit))
(class_heritage (implements_clause (generic_type name: (type_identifier) @reference.inherit)))
(extends_type_clause type: (type_identifier) @reference.inherit)
(extends_type_clause type: (generic_type name: (type_identifier) @reference.inherit))

(type_annotation (type_identifier) @reference.type)
(type_arguments (type_identifier) @reference.type)
(generic_type name: (type_identifier) @reference.type)
(union_type (type_identifier) @reference.type)
(intersection_type (type_identifier) @reference.type)
(array_type (type_identifier) @reference.type)
(type_alias_declaration value: (type_identifier) @reference.type)
(as_expression (type_identifier) @reference.type)
(satisfies_expression (type_identifier) @reference.type)
(nested_type_identifier module: (_) @qualifier name: (type_identifier) @reference.type)
(constraint (type_identifier) @reference.type)
(type_predicate type: (type_identifier) @reference.type)
(lookup_type (type_identifier) @reference.type)
