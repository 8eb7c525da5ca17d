// Every export: load VariantIndex and jump through the row of the export in VariantTable. Arguments and result pass
// through untouched. The labels, rows and order come from the list of exports.

#if defined(__x86_64__)
#define POINTER_BYTES 8
#elif defined(__i386__)
#define POINTER_BYTES 4
#else
#error "no trampolines for this processor"
#endif

#if defined(_WIN32)
// The names of the exports come from the module definition file; only the 32-bit compiler decorates C names.
#define BEGIN_EXPORT(symbol) .globl symbol; symbol:
#define END_EXPORT(symbol)
#if defined(__i386__)
#define SYMBOL(name) _##name
#else
#define SYMBOL(name) name
#endif
#else
#define BEGIN_EXPORT(symbol) .globl symbol; .type symbol, @function; symbol: .cfi_startproc
#define END_EXPORT(symbol) .cfi_endproc; .size symbol, . - symbol
#define SYMBOL(name) name
        .hidden vekcvVariantIndex
        .hidden vekcvVariantTable
#endif

        .text
        .set row, 0

.macro JUMP_TO_VARIANT
#if defined(__x86_64__)
        movslq  vekcvVariantIndex(%rip), %rax
        leaq    vekcvVariantTable(%rip), %r11
        jmpq    *row(%r11, %rax, POINTER_BYTES)
#elif defined(_WIN32)
        movl    vekcvVariantIndex, %eax
        jmpl    *vekcvVariantTable + row(, %eax, POINTER_BYTES)
#else
        call    get_pc
        addl    $_GLOBAL_OFFSET_TABLE_, %ecx
        movl    vekcvVariantIndex@GOTOFF(%ecx), %eax
        leal    vekcvVariantTable@GOTOFF(%ecx, %eax, POINTER_BYTES), %eax
        jmpl    *row(%eax)
#endif
        .set    row, row + VEKCV_VARIANTS * POINTER_BYTES
.endm

#if defined(__i386__) && !defined(_WIN32)
        .p2align 4
get_pc: .cfi_startproc
        movl    (%esp), %ecx
        ret
        .cfi_endproc
#endif

#define VEKCV_EXPORT(name) \
        .p2align 4; \
        BEGIN_EXPORT(SYMBOL(name)); \
        JUMP_TO_VARIANT; \
        END_EXPORT(SYMBOL(name));
#include "vekcv_exports.inc"

#if defined(__ELF__)
        .section .note.GNU-stack, "", @progbits
#endif
