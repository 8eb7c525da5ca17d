/* Memory of the core library that is counted: loaded before it, these functions take the place of its own. */
#include <stdio.h>
#include <stdlib.h>

enum { MOST = 1024 };

static void* held[MOST];
static int heldCount, strangerCount, takenCount, allowedCount = -1;

int countHeld(void) {
    return heldCount;
}
int countTaken(void) {
    return takenCount;
}
int countStrangers(void) {
    return strangerCount;
} /* blocks that were released twice, or never taken */
void allow(int count) {
    allowedCount = count;
} /* of further blocks; any number of them below 0 */

void* vekMalloc(int bytes) {
    if (bytes < 1 || allowedCount == 0 || heldCount == MOST)
        return NULL;
    void* const block = aligned_alloc(64, ((size_t)bytes + 63) / 64 * 64);
    if (block == NULL)
        return NULL;
    allowedCount -= allowedCount > 0;
    ++takenCount;
    held[heldCount++] = block;
    return block;
}

void vekFree(void* block) {
    if (block == NULL)
        return;
    for (int i = 0; i < heldCount; ++i) {
        if (held[i] == block) {
            held[i] = held[--heldCount];
            free(block);
            return;
        }
    }
    ++strangerCount;
}

__attribute__((destructor)) static void tell(void) {
    printf("taken %d, held %d, strangers %d\n", takenCount, heldCount, strangerCount);
}
