#pragma once

#include "entry.h"
#include "upper_halves.h"

VEKCV_DECLARE_ENTRIES(VEKCV_VARIANT)

namespace VEKCV_VARIANT {

/** `function` is what an export does in this variant; it has the type of the export. */
template <auto Export>
struct Implementation;

#if defined(__i386__)
// Callers from older compilers and other languages align the stack to 4 bytes only.
#define VEKCV_ALIGN_STACK __attribute__((force_align_arg_pointer))
#else
#define VEKCV_ALIGN_STACK
#endif

template <auto Export, typename Result, typename... Arguments>
VEKCV_ALIGN_STACK Result VEKCV_CALL Entry<Export, Result(VEKCV_CALL*)(Arguments...)>::call(Arguments... arguments) {
    clearUpperHalves();
    return Implementation<Export>::function(arguments...);
}

}  // namespace VEKCV_VARIANT

/**
 * Makes a function, or a function template whose last arguments follow from the declaration, the implementation of an
 * export: VEKCV_BIND(vekiAbsDiff_8u_C1R, absDiff). Used once for every export, inside namespace VEKCV_VARIANT.
 */
#define VEKCV_BIND(name, ...)                                      \
    template <>                                                    \
    struct Implementation<&::name> {                               \
        static constexpr decltype(&::name) function = __VA_ARGS__; \
    };                                                             \
    template struct Entry<&::name>
