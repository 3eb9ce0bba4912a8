# What the generator of the class reference reads instead of a header. It finds no place for
# specialisations of what is the standard library's, takes a tag in a sentence for one of its own, and
# a backslash for the beginning of a command.
/^struct std::hash/,/^};/d
/^ *\/\/\//s/<script>/script/
/^ *\/\/\//s/`"`, `\\`/quotes, backslashes/
/^ *\/\/\//s/\\uxxxx/a number/
