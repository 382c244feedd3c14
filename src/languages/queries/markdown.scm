(section (atx_heading heading_content: (inline) @name) . (_)? @body) @definition.section
; The grammar nests what follows such a heading in the section before it
(setext_heading heading_content: (paragraph (inline) @name)) @definition.section
