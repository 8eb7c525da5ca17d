// How an export reaches its implementations: the trampoline of an export (trampolines.S) jumps to one of the entries in
// its row of the table (table.cpp), and VEKCV_BIND (bind.h) defines the entry of the variant that is being compiled.
#pragma once

#include "vekcv.h"

/** Declares Entry<&export>::call of a variant: a function of the type of the export. */
#define VEKCV_DECLARE_ENTRIES(variant)                             \
    namespace variant {                                            \
    template <auto Export, typename Type = decltype(Export)>       \
    struct Entry;                                                  \
    template <auto Export, typename Result, typename... Arguments> \
    struct Entry<Export, Result(VEKCV_CALL*)(Arguments...)> {      \
        static Result VEKCV_CALL call(Arguments... arguments);     \
    };                                                             \
    }
