(comment) @comment
(attribute_list) @attribute

(namespace_definition name: (namespace_name) @package)

(class_declaration name: (name) @name body: (_) @body) @definition.class
(interface_declaration name: (name) @name body: (_) @body) @definition.interface
(trait_declaration name: (name) @name body: (_) @body) @definition.trait
(enum_declaration name: (name) @name body: (_) @body) @definition.enum
(enum_case name: (name) @name) @definition.constant
(function_definition name: (name) @name body: (_) @body) @definition.function
(method_declaration name: (name) @name body: (_)? @body) @definition.method
(method_declaration (visibility_modifier) @hidden name: (name) @name (#not-eq? @hidden "public")) @definition.method
(property_declaration (property_element (variable_name (name) @name))) @definition.property
(property_declaration (visibility_modifier) @hidden (property_element (variable_name (name) @name))
  (#not-eq? @hidden "public")) @definition.property
(const_declaration (const_element (name) @name)) @definition.constant
(const_declaration (visibility_modifier) @hidden (const_element (name) @name)
  (#not-eq? @hidden "public")) @definition.constant
(anonymous_function) @scope.local
(arrow_function) @scope.local

(function_call_expression function: (name) @reference.call)
(function_call_expression function: (qualified_name (name) @reference.call))
(member_call_expression object: (_) @qualifier name: (name) @reference.call)
(nullsafe_member_call_expression object: (_) @qualifier name: (name) @reference.call)
(scoped_call_expression scope: (_) @qualifier name: (name) @reference.call)
(object_creation_expression (name) @reference.call)
(object_creation_expression (qualified_name (name) @reference.call))
(base_clause (name) @reference.inherit)
(base_clause (qualified_name (name) @reference.inherit))
(class_interface_clause (name) @reference.inherit)
(class_interface_clause (qualified_name (name) @reference.inherit))
(use_declaration (name) @reference.inherit)
(named_type (name) @reference.type)

(namespace_use_clause . (qualified_name) @module) @import
(namespace_use_clause . (name) @module) @import
(include_expression (string) @module) @import
(require_once_expression (string) @module) @import
(require_expression (string) @module) @import
(include_once_expression (string) @module) @import
