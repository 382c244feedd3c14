(class_declaration name: (identifier) @name body: (_) @body) @definition.class
(class_heritage (identifier) @reference.inherit)
(class_heritage (member_expression object: (_) @qualifier property: (property_identifier) @reference.inherit))
(field_definition property: (property_identifier) @name
  value: [(arrow_function body: (_) @body) (function_expression body: (_) @body)]) @definition.method
(field_definition property: (property_identifier) @name) @definition.field
(field_definition property: (private_property_identifier) @name @hidden) @definition.field

(jsx_opening_element name: (identifier) @reference.call)
(jsx_self_closing_element name: (identifier) @reference.call)
