#pragma once

#include <array>
#include <tuple>

#include "arguments.h"
#include "regions.h"
#include "test_image.h"

/** Images of a call that looks at one of their channels, where a mask tells which pixels take part. */
template <typename T, int kChannelCount, bool kHasMask, size_t kSources>
struct ChannelOperands {
    static constexpr int kChannels = kChannelCount;

    RoiSize roi;
    std::array<TestImage<T>, kSources> sources;
    TestImage<uint8_t> mask;
    int32_t channel = kChannels > 1 ? 2 : 1;

    /** value(random) gives each element. */
    template <typename Value>
    ChannelOperands(RoiSize size, const Layouts& layouts, Value value)
        : roi(size),
          sources(makeSources(size, layouts, value, std::make_index_sequence<kSources>())),
          mask(TestImage<uint8_t>::filled(size, layouts[kSources],
                                          [random = Random(9)](int, int) mutable { return random.mask(); })) {}

    /** All pixels of all sources hold one value and take part. */
    ChannelOperands(RoiSize size, T value) : ChannelOperands(size, {}, [value](Random&) { return value; }) {
        mask = TestImage<uint8_t>::constant(size, 2);
    }

    /** The element of the channel at (x, y). */
    T& at(size_t source, int x, int y) const { return sources[source].at(x * kChannels + channel - 1, y); }
    bool takesPart(int x, int y) const { return !kHasMask || mask.at(x, y) != 0; }

    /** visit(x, y) for every pixel that takes part. */
    template <typename Visitor>
    void forEach(Visitor visit) const {
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x)
                if (takesPart(x, y))
                    visit(x, y);
    }

    /** check(operands) for regions of all kinds, layouts and channels. */
    template <typename Value, typename Check>
    static void forSmallRegions(Value value, Check check) {
        forSmallImages([&, turn = 0](RoiSize size, const Layouts& layouts) mutable {
            ChannelOperands operands(size, layouts, value);
            if (kChannels > 1)
                operands.channel = 1 + turn++ % 3;
            SCOPED_TRACE(::testing::Message() << "channel " << operands.channel);
            check(operands);
        });
    }

  private:
    template <typename Value, size_t... kIndex>
    static std::array<TestImage<T>, kSources> makeSources(RoiSize roi, const Layouts& layouts, Value value,
                                                          std::index_sequence<kIndex...>) {
        const auto make = [&](size_t source) {
            return TestImage<T>::filled(
                roi, layouts[source],
                [&, random = Random(uint32_t(source) + 1)](int, int) mutable { return T(value(random)); }, kChannels);
        };
        return {make(kIndex)...};
    }
};

/**
 * An export that looks at one channel of kSourceCount images, with or without a mask, and gives results; what its form
 * is follows from its type.
 */
template <auto Export, size_t kSources>
struct ChannelForm;

template <typename T, typename... Rest, Status (*Export)(const T*, int32_t, Rest...), size_t kSources>
struct ChannelForm<Export, kSources> {
    using Pixel = T;

  private:
    static constexpr size_t kOtherImages =
        ((std::is_pointer_v<Rest> && std::is_const_v<std::remove_pointer_t<Rest>> ? 1u : 0u) + ...);

  public:
    static constexpr bool kHasMask = kOtherImages + 1 > kSources;
    static constexpr bool kHasChannel =
        std::is_same_v<std::tuple_element_t<2 * kOtherImages + 1, std::tuple<Rest...>>, int32_t>;
    static constexpr int kChannels = kHasChannel ? 3 : 1;
    static constexpr size_t kResultCount = sizeof...(Rest) - 2 * kOtherImages - 1 - (kHasChannel ? 1 : 0);
    using Operands = ChannelOperands<T, kChannels, kHasMask, kSources>;

    /** The first kSources of the images of operands are the sources. */
    template <typename AnyOperands, typename... Results>
    static Status call(const AnyOperands& operands, Results... results) {
        const auto sources = [&]<size_t... kIndex>(std::index_sequence<kIndex...>) {
            return std::tuple_cat(argumentsOf(operands.sources[kIndex])...);
        };
        return callWith(Export, sources(std::make_index_sequence<kSources>()), only<kHasMask>(operands.mask),
                        operands.roi, only<kHasChannel>(operands.channel), results...);
    }
};
