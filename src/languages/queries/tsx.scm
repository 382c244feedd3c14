(jsx_opening_element name: (identifier) @reference.call)
(jsx_self_closing_element name: (identifier) @reference.call)
