; What C and C++ share.

(comment) @comment

(preproc_def name: (identifier) @name) @definition.constant
(preproc_function_def name: (identifier) @name) @definition.function

(function_definition
  declarator: [(function_declarator declarator: (identifier) @name)
               (pointer_declarator declarator: (function_declarator declarator: (identifier) @name))
               (pointer_declarator declarator: (pointer_declarator
                 declarator: (function_declarator declarator: (identifier) @name)))]
  body: (_) @body) @definition.function
(function_definition (storage_class_specifier) @hidden
  declarator: [(function_declarator declarator: (identifier) @name)
               (pointer_declarator declarator: (function_declarator declarator: (identifier) @name))]
  (#eq? @hidden "static")) @definition.function

(declaration
  declarator: [(function_declarator declarator: (identifier) @name)
               (pointer_declarator declarator: (function_declarator declarator: (identifier) @name))] (#set! only-in-header)) @definition.function

(struct_specifier name: (type_identifier) @name body: (_) @body) @definition.struct
(union_specifier name: (type_identifier) @name body: (_) @body) @definition.struct
(enum_specifier name: (type_identifier) @name body: (_) @body) @definition.enum
(enumerator name: (identifier) @name) @definition.constant

(type_definition type: (struct_specifier !name body: (_) @body) declarator: (type_identifier) @name) @definition.struct
(type_definition type: (union_specifier !name body: (_) @body) declarator: (type_identifier) @name) @definition.struct
(type_definition type: (enum_specifier !name body: (_) @body) declarator: (type_identifier) @name) @definition.enum
(type_definition declarator: [
  (type_identifier) @name
  (pointer_declarator declarator: (type_identifier) @name)
  (function_declarator declarator: (parenthesized_declarator (pointer_declarator declarator: (type_identifier) @name)))
  (array_declarator declarator: (type_identifier) @name)]) @definition.type

(field_declaration declarator: [
  (field_identifier) @name
  (pointer_declarator declarator: (field_identifier) @name)
  (pointer_declarator declarator: (pointer_declarator declarator: (field_identifier) @name))
  (array_declarator declarator: (field_identifier) @name)
  (function_declarator declarator: (parenthesized_declarator (pointer_declarator declarator: (field_identifier) @name)))
  (pointer_declarator declarator: (function_declarator
    declarator: (parenthesized_declarator (pointer_declarator declarator: (field_identifier) @name))))]) @definition.field

(declaration declarator: [
  (init_declarator declarator: (identifier) @name)
  (init_declarator declarator: (pointer_declarator declarator: (identifier) @name))
  (init_declarator declarator: (array_declarator declarator: (identifier) @name))
  (identifier) @name
  (pointer_declarator declarator: (identifier) @name)
  (array_declarator declarator: (identifier) @name)]) @definition.variable
(declaration (storage_class_specifier) @hidden declarator: [
  (init_declarator declarator: (identifier) @name)
  (init_declarator declarator: (pointer_declarator declarator: (identifier) @name))
  (init_declarator declarator: (array_declarator declarator: (identifier) @name))
  (identifier) @name
  (array_declarator declarator: (identifier) @name)]
  (#eq? @hidden "static")) @definition.variable

(call_expression function: (identifier) @reference.call)
(call_expression function: (field_expression argument: (_) @qualifier field: (field_identifier) @reference.call))
(type_identifier) @reference.type

(preproc_include path: [(string_literal) (system_lib_string)] @module) @import
