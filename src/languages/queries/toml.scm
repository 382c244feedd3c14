(comment) @comment
(table . [(bare_key) (dotted_key) (quoted_key)] @name . (pair)? @body) @definition.section
(table_array_element . [(bare_key) (dotted_key) (quoted_key)] @name . (pair)? @body) @definition.section
(document (pair . [(bare_key) (dotted_key) (quoted_key)] @name) @definition.key)
(table (pair . [(bare_key) (dotted_key) (quoted_key)] @name) @definition.key)
