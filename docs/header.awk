# The headers as Doxygen is to see them, line for line. In vekcv.h one comment describes a run of declarations: each gets
# a copy of it. The word that opens a paragraph as its title becomes bold.
/^\/\*\* [^@].* \*\/$/ { description = $0; first = 1 }
/^$|^\/\*\*$/ { description = "" }
/^VEKCV_API / {
    if (description != "" && !first) $0 = description " " $0
    first = 0
}
previous == " *" && /^ \* [A-Z][a-z]+\. / { sub(/[A-Z][a-z]+\./, "**&**") }
{ print; previous = $0 }
