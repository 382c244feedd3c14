[(line_comment) (block_comment)] @comment
[(annotation) (marker_annotation)] @attribute
(package_declaration (_) @package)

(class_declaration name: (identifier) @name body: (_) @body) @definition.class
(record_declaration name: (identifier) @name body: (_) @body) @definition.class
(interface_declaration name: (identifier) @name body: (_) @body) @definition.interface
(annotation_type_declaration name: (identifier) @name body: (_) @body) @definition.interface
(enum_declaration name: (identifier) @name body: (_) @body) @definition.enum
(enum_constant name: (identifier) @name body: (_)? @body) @definition.constant
(method_declaration name: (identifier) @name body: (_) @body) @definition.method
(method_declaration name: (identifier) @name !body) @definition.method
(constructor_declaration name: (identifier) @name body: (_) @body) @definition.method
(compact_constructor_declaration name: (identifier) @name body: (_) @body) @definition.method
(annotation_type_element_declaration name: (identifier) @name) @definition.method
(field_declaration (modifiers "static" "final") declarator: (variable_declarator name: (identifier) @name)) @definition.constant
(field_declaration declarator: (variable_declarator name: (identifier) @name)) @definition.field
(constant_declaration declarator: (variable_declarator name: (identifier) @name)) @definition.constant
(lambda_expression) @scope.local

(class_declaration (modifiers "public" @export) name: (identifier) @name) @definition.class
(record_declaration (modifiers "public" @export) name: (identifier) @name) @definition.class
(interface_declaration (modifiers "public" @export) name: (identifier) @name) @definition.interface
(annotation_type_declaration (modifiers "public" @export) name: (identifier) @name) @definition.interface
(enum_declaration (modifiers "public" @export) name: (identifier) @name) @definition.enum
(method_declaration (modifiers "public" @export) name: (identifier) @name) @definition.method
(constructor_declaration (modifiers "public" @export) name: (identifier) @name) @definition.method
(field_declaration (modifiers "public" @export) declarator: (variable_declarator name: (identifier) @name)) @definition.field
(interface_body "{" @access.public)
(annotation_type_body "{" @access.public)
(enum_body (enum_constant name: (identifier) @name @export) @definition.constant)

(method_invocation !object name: (identifier) @reference.call)
(method_invocation object: (_) @qualifier name: (identifier) @reference.call)
(object_creation_expression type: (type_identifier) @reference.call)
(object_creation_expression type: (generic_type (type_identifier) @reference.call))
(method_reference . (_) @qualifier (identifier) @reference.call .)
(marker_annotation name: (identifier) @reference.type)
(annotation name: (identifier) @reference.type)
(type_identifier) @reference.type
(superclass (type_identifier) @reference.inherit)
(superclass (generic_type (type_identifier) @reference.inherit))
(super_interfaces (type_list (type_identifier) @reference.inherit))
(super_interfaces (type_list (generic_type (type_identifier) @reference.inherit)))
(extends_interfaces (type_list (type_identifier) @reference.inherit))
(extends_interfaces (type_list (generic_type (type_identifier) @reference.inherit)))

(import_declaration (scoped_identifier scope: (_) @module name: (_) @name) .) @import
(import_declaration (_) @module (asterisk) @name) @import

; Heads that an error has cut from their bodies
(ERROR "class" @definition.class . (identifier) @name "{" @body)
(ERROR "interface" @definition.interface . (identifier) @name "{" @body)
