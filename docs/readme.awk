# The README as Doxygen is to see it: the names in the table of families and the links to headers lead to their pages.
# Reads vekcv.h, then README.md.
NR == FNR {
    if ($2 == "@defgroup") {
        title = $0
        sub(/.*@defgroup [A-Za-z0-9]+ /, "", title)
        group[tolower(title)] = $3
    }
    next
}
/^\| / {
    split($0, cells, " *\\| *")
    if (tolower(cells[2]) in group) sub(/^\| [^|]* \|/, "| @ref " group[tolower(cells[2])] " \"" cells[2] "\" |")
}
{ gsub(/\]\((include|core)\//, "](@ref "); print }
