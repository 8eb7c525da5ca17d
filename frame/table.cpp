#include "table.h"

#define VEKCV_VARIANT_ITEM(variant) VEKCV_DECLARE_ENTRIES(variant)
#include "vekcv_variants.inc"
#undef VEKCV_VARIANT_ITEM

namespace vekcv {
namespace {

template <auto Export>
struct Row {
    decltype(Export) entry[VEKCV_VARIANTS] = {
#define VEKCV_VARIANT_ITEM(variant) &::variant::Entry<Export>::call,
#include "vekcv_variants.inc"
#undef VEKCV_VARIANT_ITEM
    };
};

}  // namespace

struct Table {
#define VEKCV_EXPORT(name) Row<&::name> name;
#include "vekcv_exports.inc"
#undef VEKCV_EXPORT
};

constinit const Table VariantTable{};

}  // namespace vekcv
