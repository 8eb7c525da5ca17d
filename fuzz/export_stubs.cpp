// Stands for the library in a program that names the exports and calls none of them.
extern "C" {
#define VEKCV_EXPORT(name) \
    void name() {}
#include "vekcv_exports.inc"
#undef VEKCV_EXPORT
}
