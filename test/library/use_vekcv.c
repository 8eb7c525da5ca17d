/* A program of somebody who uses the library; it is valid C99 and valid C++. */
#include <stdio.h>
#include <vekcore.h>
#include <vekcv.h>

int main(void) {
    const uint8_t source[6] = {1, 2, 3, 4, 5, 6};
    float sum[6] = {0};
    const RoiSize roi = {3, 2};
    const Status status = vekiAdd_8u32f_C1IR(source, 3, sum, 3 * (int32_t)sizeof(float), roi);
    if (status != StatusOk) {
        puts(vekGetStatusString(status));
        return 1;
    }
    printf("%s adds up to %g\n", vekcvGetLibVersion()->name, (double)sum[5]);
    return sum[5] == 6.f ? 0 : 1;
}
