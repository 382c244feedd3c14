[(comment) (multiline_comment)] @comment
(modifiers (attribute) @attribute)

(class_declaration declaration_kind: "class" name: (_) @name body: (_) @body) @definition.class
(class_declaration declaration_kind: "actor" name: (_) @name body: (_) @body) @definition.class
(class_declaration declaration_kind: "struct" name: (_) @name body: (_) @body) @definition.struct
(class_declaration declaration_kind: "enum" name: (_) @name body: (_) @body) @definition.enum
(class_declaration declaration_kind: "extension" name: (_) @name body: (_)) @scope.type
(protocol_declaration name: (type_identifier) @name body: (_) @body) @definition.interface
(protocol_function_declaration name: (simple_identifier) @name) @definition.method
(protocol_property_declaration name: (pattern bound_identifier: (simple_identifier) @name)) @definition.property
; Only a function has these two; naming the node makes the query half a second dearer to compile
(_ name: (simple_identifier) @name body: (function_body) @body) @definition.function
(init_declaration name: "init" @name body: (_) @body) @definition.method
(enum_entry name: (simple_identifier) @name) @definition.constant
(property_declaration name: (pattern bound_identifier: (simple_identifier) @name)
  computed_value: (_) @body) @definition.property
(property_declaration name: (pattern bound_identifier: (simple_identifier) @name)) @definition.property
(typealias_declaration name: (type_identifier) @name) @definition.type
(lambda_literal) @scope.local

(_ (modifiers (visibility_modifier) @hidden) name: (simple_identifier) @name body: (function_body)
  (#any-of? @hidden "private" "fileprivate")) @definition.function
(class_declaration (modifiers (visibility_modifier) @hidden) name: (_) @name
  (#any-of? @hidden "private" "fileprivate")) @definition.class
(property_declaration (modifiers (visibility_modifier) @hidden) name: (pattern bound_identifier: (simple_identifier) @name)
  (#any-of? @hidden "private" "fileprivate")) @definition.property

(call_expression . (simple_identifier) @reference.call)
(call_expression . (navigation_expression target: (_) @qualifier
  suffix: (navigation_suffix suffix: (simple_identifier) @reference.call)))
(inheritance_specifier inherits_from: (user_type (type_identifier) @reference.inherit))
(user_type (type_identifier) @reference.type)

(import_declaration (identifier) @module) @import
