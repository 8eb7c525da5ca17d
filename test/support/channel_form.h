#pragma once

#include <array>
#include <tuple>

#include "arguments.h"
#include "regions.h"
#include "status_order.h"
#include "test_image.h"
#include "unaligned_image.h"

/**
 * An export that looks at one channel of kSources images, with or without a mask, and gives results; what its form is
 * follows from its type.
 */
template <auto Export, size_t kSources>
struct ChannelForm;

template <typename T, typename... Rest, Status (*Export)(const T*, int32_t, Rest...), size_t kSources>
struct ChannelForm<Export, kSources> {
    using Pixel = T;
    static constexpr size_t kSourceCount = kSources;

  private:
    static constexpr size_t kOtherImages =
        ((std::is_pointer_v<Rest> && std::is_const_v<std::remove_pointer_t<Rest>> ? 1u : 0u) + ...);

  public:
    static constexpr bool kHasMask = kOtherImages + 1 > kSources;
    static constexpr bool kHasChannel =
        std::is_same_v<std::tuple_element_t<2 * kOtherImages + 1, std::tuple<Rest...>>, int32_t>;
    static constexpr int kChannels = kHasChannel ? 3 : 1;
    static constexpr size_t kResultCount = sizeof...(Rest) - 2 * kOtherImages - 1 - (kHasChannel ? 1 : 0);

    /** Arguments of a call, and the pixels that it looks at. */
    struct Operands {
        RoiSize roi;
        std::array<TestImage<T>, kSources> sources;
        TestImage<uint8_t> mask;
        int32_t channel = kHasChannel ? 2 : 1;

        /** value(random) gives each element. */
        template <typename Value>
        Operands(RoiSize size, const Layouts& layouts, Value value)
            : roi(size),
              sources(makeSources(size, layouts, value, std::make_index_sequence<kSources>())),
              mask(TestImage<uint8_t>::filled(size, layouts[kSources],
                                              [random = Random(9)](int, int) mutable { return random.mask(); })) {}

        /** All pixels of all sources hold one value and take part. */
        Operands(RoiSize size, T value) : Operands(size, {}, [value](Random&) { return value; }) {
            mask = TestImage<uint8_t>::filled(size, {}, [](int, int) { return uint8_t(2); });
        }

        T pixel(size_t source, int x, int y) const { return sources[source].at(x * kChannels + channel - 1, y); }
        bool takesPart(int x, int y) const { return !kHasMask || mask.at(x, y) != 0; }

        /** visit(x, y) for every pixel that takes part. */
        template <typename Visitor>
        void forEach(Visitor visit) const {
            for (int y = 0; y < roi.height; ++y)
                for (int x = 0; x < roi.width; ++x)
                    if (takesPart(x, y))
                        visit(x, y);
        }

        template <typename... Results>
        auto arguments(Results... results) const {
            return argumentsWith(sources, mask, results...);
        }
        template <typename Sources, typename Mask, typename... Results>
        auto argumentsWith(const Sources& itsSources, const Mask& itsMask, Results... results) const {
            return std::tuple_cat(
                std::apply([&](const auto&... each) { return std::tuple_cat(argumentsOf(each)...); }, itsSources),
                only<kHasMask>(argumentsOf(itsMask)), std::tuple(roi), only<kHasChannel>(std::tuple(channel)),
                std::tuple(results...));
        }

        template <typename... Results>
        Status call(Results... results) const {
            return std::apply(Export, arguments(results...));
        }

        /** The same with copies of the images at odd addresses. */
        template <typename... Results>
        Status callUnaligned(Results... results) const {
            const auto copies =
                std::apply([](const auto&... each) { return std::tuple(UnalignedImage<T>(each)...); }, sources);
            return std::apply(Export, argumentsWith(copies, UnalignedImage<uint8_t>(mask), results...));
        }
    };

    /** The statuses that all such exports share; `results` are set to null in turn where they are required. */
    template <bool kResultsAreRequired, typename... Results>
    static void checkStatuses(const std::function<bool()>& untouched, Results*... results) {
        const Operands operands({9, 4}, {}, [](Random& random) { return random.value<T>(); });
        StatusOrder order(Export, operands.arguments(results...));
        if constexpr (kResultsAreRequired)
            [&]<size_t... kIndex>(std::index_sequence<kIndex...>) {
                (order.template fault<sizeof...(Rest) + 2 - sizeof...(Results) + kIndex>("null result",
                                                                                         StatusNullPointer, nullptr),
                 ...);
            }
        (std::make_index_sequence<sizeof...(Results)>());
        order.commonFaults(std::vector<int32_t>(kSources, operands.roi.width * kChannels));
        if constexpr (kHasChannel)
            for (const int32_t channel : {0, 4, -1, INT32_MAX, INT32_MIN})
                order.template fault<sizeof...(Rest) + 1 - sizeof...(Results)>("channel " + std::to_string(channel),
                                                                               StatusChannelOfInterestError, channel);
        order.check(untouched);
    }

    /** check(operands) for regions of all kinds, layouts and channels. */
    template <typename Value, typename Check>
    static void forSmallRegions(Value value, Check check) {
        forSmallImages([&, channel = 0](RoiSize roi, const Layouts& layouts) mutable {
            Operands operands(roi, layouts, value);
            if (kHasChannel)
                operands.channel = 1 + channel++ % 3;
            SCOPED_TRACE(::testing::Message()
                         << roi.width << " x " << roi.height << ", " << layouts << ", channel " << operands.channel);
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
