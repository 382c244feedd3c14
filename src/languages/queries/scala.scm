[(comment) (block_comment)] @comment
(annotation) @attribute
(package_clause name: (_) @package)

(class_definition name: (identifier) @name body: (_)? @body) @definition.class
(object_definition name: (identifier) @name body: (_)? @body) @definition.class
(trait_definition name: (identifier) @name body: (_)? @body) @definition.trait
(enum_definition name: (identifier) @name body: (_)? @body) @definition.enum
(simple_enum_case name: (identifier) @name) @definition.constant
(full_enum_case name: (identifier) @name) @definition.constant
(function_definition name: (identifier) @name body: (_)? @body) @definition.function
(function_declaration name: (identifier) @name) @definition.function
(type_definition name: (type_identifier) @name) @definition.type
(val_definition pattern: (identifier) @name) @definition.field
(var_definition pattern: (identifier) @name) @definition.field
(val_declaration name: (identifier) @name) @definition.field
(given_definition name: (identifier) @name) @definition.variable
(lambda_expression) @scope.local

(function_definition (modifiers (access_modifier) @hidden) name: (identifier) @name) @definition.function
(class_definition (modifiers (access_modifier) @hidden) name: (identifier) @name) @definition.class
(object_definition (modifiers (access_modifier) @hidden) name: (identifier) @name) @definition.class
(val_definition (modifiers (access_modifier) @hidden) pattern: (identifier) @name) @definition.field

(call_expression function: (identifier) @reference.call)
(call_expression function: (field_expression value: (_) @qualifier field: (identifier) @reference.call))
(call_expression function: (generic_function function: (identifier) @reference.call))
(instance_expression (type_identifier) @reference.call)
(extends_clause type: (type_identifier) @reference.inherit)
(extends_clause type: (generic_type type: (type_identifier) @reference.inherit))
(type_identifier) @reference.type

(import_declaration path: (_) @module) @import
