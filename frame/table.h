#pragma once

#include "entry.h"

// The assembler names are those that trampolines.S uses.
namespace vekcv {

/** One row for each export in the order of the header, with one entry point for each variant. */
struct Table;
extern const Table VariantTable __asm__("vekcvVariantTable");

/** The variant in use; set once when the library is loaded. */
extern int32_t VariantIndex __asm__("vekcvVariantIndex");

/** Whether the vector registers of the processor are longer than 16 bytes; set at the same time. */
extern bool RegistersHaveUpperHalves;

}  // namespace vekcv
