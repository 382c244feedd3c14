(attribute_declaration) @attribute

(class_specifier name: [(type_identifier) @name
                        (template_type name: (type_identifier) @name)
                        (qualified_identifier scope: (_) @qualifier name: (type_identifier) @name)]
  body: (_) @body) @definition.class
(struct_specifier name: [(template_type name: (type_identifier) @name)
                         (qualified_identifier scope: (_) @qualifier name: (type_identifier) @name)]
  body: (_) @body) @definition.struct
(alias_declaration name: (type_identifier) @name) @definition.type
(concept_definition name: (identifier) @name) @definition.type
(namespace_definition name: (_) @name body: (_) @body (#set! only-documented)) @definition.namespace
; Heads that an error has cut from their bodies
(ERROR "namespace" @definition.namespace . (_) @name . "{" @body (#set! only-documented))
(ERROR "class" @definition.class . (type_identifier) @name "{" @body)
(ERROR "struct" @definition.struct . (type_identifier) @name "{" @body)
(namespace_definition !name) @scope.hidden
(lambda_expression) @scope.local

; References to what is returned wrap a declarator as pointers do
(function_definition
  declarator: (reference_declarator (function_declarator declarator: (identifier) @name))
  body: (_) @body) @definition.function

; Defined outside its class: the name says its scopes
(function_definition
  declarator: [
    (function_declarator declarator: (qualified_identifier) @name)
    (pointer_declarator declarator: (function_declarator declarator: (qualified_identifier) @name))
    (reference_declarator (function_declarator declarator: (qualified_identifier) @name))
    (qualified_identifier name: (operator_cast)) @name]
  body: (_)? @body) @definition.method

; Members
(function_definition
  declarator: [
    (function_declarator declarator: [(field_identifier) (destructor_name) (operator_name)] @name)
    (pointer_declarator declarator: (function_declarator declarator: [(field_identifier) (operator_name)] @name))
    (reference_declarator (function_declarator declarator: [(field_identifier) (operator_name)] @name))
    (operator_cast) @name]
  body: (_)? @body) @definition.method
(field_declaration
  declarator: [
    (function_declarator declarator: [(field_identifier) (destructor_name) (operator_name)] @name)
    (pointer_declarator declarator: (function_declarator declarator: [(field_identifier) (operator_name)] @name))
    (reference_declarator (function_declarator declarator: [(field_identifier) (operator_name)] @name))
    (operator_cast) @name]) @definition.method
(field_declaration_list (declaration
  declarator: (function_declarator declarator: [(identifier) (destructor_name) (operator_name)] @name)) @definition.method)
(field_declaration declarator: (reference_declarator (field_identifier) @name)) @definition.field

(template_declaration (_) @wrapped .) @wrapper
(class_specifier body: (field_declaration_list "{" @access.private))
((access_specifier) @access.public (#eq? @access.public "public"))
((access_specifier) @access.private (#not-eq? @access.private "public"))

(call_expression function: (qualified_identifier scope: (_) @qualifier name: (identifier) @reference.call))
(call_expression function: (qualified_identifier scope: (_) @qualifier
  name: (template_function name: (identifier) @reference.call)))
(call_expression function: (template_function name: (identifier) @reference.call))
(call_expression function: (field_expression argument: (_) @qualifier
  field: (template_method name: (field_identifier) @reference.call)))
(base_class_clause (type_identifier) @reference.inherit)
(base_class_clause (template_type name: (type_identifier) @reference.inherit))
(base_class_clause (qualified_identifier scope: (_) @qualifier name: (type_identifier) @reference.inherit))
(using_declaration (qualified_identifier scope: (_) @module name: (_) @name)) @import
