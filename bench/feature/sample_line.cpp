#include <algorithm>

#include "export_row.h"
#include "feature/peer.h"

namespace bench {
namespace {

/** The diagonal of an image, which is no operand: little of it is read. */
template <auto Export, typename T>
Work sampleWork(Status(VEKCV_CALL*)(const T*, int32_t, RoiSize, T*, ImagePoint, ImagePoint), RoiSize size) {
    constexpr int32_t kChannels = Layout(nameOf<Export>()).channels;
    const Operand image = Operand::make(Role::kBuffer, elementOf<T>(), kChannels, size);
    const Operand samples =
        Operand::make(Role::kDestination, elementOf<T>(), kChannels, {std::max(size.width, size.height), 1});
    Work work{{size, {}, {image, samples}}, {}, {}};
    work.vekcv = [=] {
        expectOk(Export(static_cast<const T*>(image.memory.get()), image.step, size,
                        static_cast<T*>(samples.memory.get()), {0, 0}, {size.width - 1, size.height - 1}),
                 nameOf<Export>());
    };
    if (peer::sampleLine)
        work.peer = peer::sampleLine(work.data);
    return work;
}

template <auto Export>
Row sampleRow() {
    return {std::string(nameOf<Export>()), [](RoiSize size) { return sampleWork<Export>(Export, size); }};
}

const Row kSampleRows[] = {
    sampleRow<&vekiSampleLine_8u_C1R>(),  sampleRow<&vekiSampleLine_8u_C3R>(),  sampleRow<&vekiSampleLine_16u_C1R>(),
    sampleRow<&vekiSampleLine_16u_C3R>(), sampleRow<&vekiSampleLine_32f_C1R>(), sampleRow<&vekiSampleLine_32f_C3R>(),
};
const Family sampleLine("SampleLine", kSampleRows);

}  // namespace
}  // namespace bench
