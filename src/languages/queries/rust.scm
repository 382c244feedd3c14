[(line_comment) (block_comment)] @comment
(attribute_item) @attribute
(attribute_item (attribute (identifier) @_doc value: (string_literal) @attribute.doc) (#eq? @_doc "doc")) @attribute

(function_item (visibility_modifier)? @export name: (identifier) @name body: (_) @body) @definition.function
(function_signature_item name: (identifier) @name) @definition.function
(closure_expression) @scope.local
(struct_item (visibility_modifier)? @export name: (type_identifier) @name body: (_)? @body) @definition.struct
(union_item (visibility_modifier)? @export name: (type_identifier) @name body: (_) @body) @definition.struct
(enum_item (visibility_modifier)? @export name: (type_identifier) @name body: (_) @body) @definition.enum
(enum_variant name: (identifier) @name) @definition.constant
(trait_item (visibility_modifier)? @export name: (type_identifier) @name body: (_) @body) @definition.trait
(type_item (visibility_modifier)? @export name: (type_identifier) @name) @definition.type
(associated_type name: (type_identifier) @name) @definition.type
(field_declaration (visibility_modifier)? @export name: (field_identifier) @name) @definition.field
(const_item (visibility_modifier)? @export name: (identifier) @name) @definition.constant
(static_item (visibility_modifier)? @export name: (identifier) @name) @definition.variable
(mod_item (visibility_modifier)? @export name: (identifier) @name body: (_) @body) @definition.module
(macro_definition name: (identifier) @name "{"? @body) @definition.function
(source_file (attribute_item (attribute (identifier) @_macro)) . (macro_definition name: (identifier) @name) @definition.function @export
  (#eq? @_macro "macro_export"))
(declaration_list (attribute_item (attribute (identifier) @_macro)) . (macro_definition name: (identifier) @name) @definition.function @export
  (#eq? @_macro "macro_export"))

(impl_item !trait type: (_) @name) @scope.type
(impl_item trait: (_) type: (_) @name body: (declaration_list "{" @access.public)) @scope.type
(trait_item body: (declaration_list "{" @access.public))
(enum_variant_list "{" @access.public)

(mod_item body: (declaration_list . (inner_attribute_item)? . (line_comment (inner_doc_comment_marker)) @docstring))

(call_expression function: (identifier) @reference.call)
(call_expression function: (field_expression value: (_) @qualifier field: (field_identifier) @reference.call))
(call_expression function: (scoped_identifier path: (_) @qualifier name: (identifier) @reference.call))
(call_expression function: (generic_function function: (identifier) @reference.call))
(call_expression function: (generic_function
  function: (scoped_identifier path: (_) @qualifier name: (identifier) @reference.call)))
(call_expression function: (generic_function
  function: (field_expression value: (_) @qualifier field: (field_identifier) @reference.call)))
(macro_invocation macro: (identifier) @reference.call)
(macro_invocation macro: (scoped_identifier path: (_) @qualifier name: (identifier) @reference.call))
(struct_expression name: (type_identifier) @reference.call)

(type_identifier) @reference.type
(scoped_type_identifier path: (_) @qualifier name: (type_identifier) @reference.type)
(impl_item trait: (type_identifier) @reference.inherit)
(impl_item trait: (generic_type type: (type_identifier) @reference.inherit))
(impl_item trait: (scoped_type_identifier path: (_) @qualifier name: (type_identifier) @reference.inherit))
(trait_bounds (type_identifier) @reference.inherit)

(use_declaration argument: (identifier) @module) @import
(use_declaration argument: (scoped_identifier path: (_) @module name: (_) @name)) @import
(use_declaration argument: (use_as_clause path: (scoped_identifier path: (_) @module name: (_) @name) alias: (_) @alias)) @import
(use_declaration argument: (use_wildcard (_) @module)) @import
(use_declaration argument: (scoped_use_list path: (_) @module list: (use_list (identifier) @name))) @import
(use_declaration argument: (scoped_use_list path: (_) @module list: (use_list (scoped_identifier) @name))) @import
(use_declaration argument: (scoped_use_list path: (_) @module
  list: (use_list (use_as_clause path: (_) @name alias: (_) @alias)))) @import
(use_declaration argument: (scoped_use_list path: (_) @module
  list: (use_list (scoped_use_list list: (use_list [(identifier) (scoped_identifier)] @name))))) @import
(mod_item name: (identifier) @module !body) @import
(extern_crate_declaration name: (identifier) @module) @import
