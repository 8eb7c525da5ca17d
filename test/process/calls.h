// One call of most kinds of operations, small and large.
#pragma once

#include <cstring>
#include <initializer_list>

#include "expect.h"
#include "vekcv.h"

struct Calls {
    static constexpr int32_t kSize = 512, kStep = kSize * int32_t{sizeof(float)};

    uint8_t bytes[kSize * kSize], mask[kSize * kSize], buffer[1 << 24];
    int16_t derivatives[kSize * kSize];
    float floats[kSize * kSize];
    struct Results {
        double norm, mean, deviation;
        uint8_t difference[kSize * kSize], edges[kSize * kSize];
        int32_t sums[(kSize + 1) * (kSize + 1)];
        alignas(8) double squares[(kSize + 1) * (kSize + 1)];
        float smooth[kSize * kSize];
    } results;

    void fill() {
        for (int32_t i = 0; i < kSize * kSize; ++i) {
            bytes[i] = static_cast<uint8_t>(i * 37 ^ i >> 7);
            mask[i] = static_cast<uint8_t>(i % 3);
            derivatives[i] = static_cast<int16_t>((i * 911) % 512 - 256);
            floats[i] = static_cast<float>(bytes[i]);
        }
    }

    void run() {
        std::memset(&results, 0, sizeof results);
        for (const RoiSize roi : {RoiSize{16, 16}, RoiSize{kSize, kSize}}) {
            const Status statuses[] = {vekiNorm_L2_8u_C1MR(bytes, kSize, mask, kSize, roi, &results.norm),
                                       vekiMean_StdDev_8u_C1R(bytes, kSize, roi, &results.mean, &results.deviation),
                                       vekiAbsDiff_8u_C1R(bytes, kSize, mask, kSize, results.difference, kSize, roi),
                                       vekiSqrIntegral_8u32s64f_C1R(bytes, kSize, results.sums, (kSize + 1) * 4,
                                                                    results.squares, (kSize + 1) * 8, roi, 0, 0),
                                       vekiFilterGaussBorder_32f_C1R(floats, kStep, results.smooth, kStep, roi, 5, 1.f,
                                                                     BorderReplicate, 0, buffer),
                                       vekiCanny_16s8u_C1R(derivatives, kSize * 2, derivatives, kSize * 2,
                                                           results.edges, kSize, roi, 10.f, 50.f, buffer)};
            for (const Status status : statuses)
                expect(status == StatusOk, "an operation succeeds");
        }
    }
};
