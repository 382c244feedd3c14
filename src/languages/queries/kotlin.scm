[(line_comment) (multiline_comment)] @comment
(annotation) @attribute
(package_header (identifier) @package)

(class_declaration "enum" (type_identifier) @name (enum_class_body)? @body) @definition.enum
(class_declaration "class" (type_identifier) @name [(class_body) (enum_class_body)]? @body) @definition.class
(class_declaration "interface" (type_identifier) @name (class_body)? @body) @definition.interface
(object_declaration (type_identifier) @name (class_body)? @body) @definition.class
(companion_object) @scope.type
(enum_entry (simple_identifier) @name) @definition.constant
(function_declaration (simple_identifier) @name (function_body)? @body) @definition.function
(secondary_constructor) @scope.local
(type_alias (type_identifier) @name) @definition.type
(property_declaration (modifiers (property_modifier) @_const) (variable_declaration (simple_identifier) @name)
  (#eq? @_const "const")) @definition.constant
(property_declaration (variable_declaration (simple_identifier) @name)) @definition.property
(class_parameter (binding_pattern_kind) (simple_identifier) @name) @definition.property
(lambda_literal) @scope.local

(class_declaration (modifiers (visibility_modifier) @hidden) (type_identifier) @name
  (#not-eq? @hidden "public")) @definition.class
(function_declaration (modifiers (visibility_modifier) @hidden) (simple_identifier) @name
  (#not-eq? @hidden "public")) @definition.function
(property_declaration (modifiers (visibility_modifier) @hidden) (variable_declaration (simple_identifier) @name)
  (#not-eq? @hidden "public")) @definition.property

(call_expression . (simple_identifier) @reference.call)
(call_expression . (navigation_expression (_) @qualifier (navigation_suffix (simple_identifier) @reference.call)))
(delegation_specifier (user_type (type_identifier) @reference.inherit))
(delegation_specifier (constructor_invocation (user_type (type_identifier) @reference.inherit)))
(user_type (type_identifier) @reference.type)

(import_header (identifier) @module) @import
