/* A user's program: it takes the public header and whatever the package hands it, and a C compiler. */
#include <kuvcv.h>
#include <stdio.h>

int main(void) {
    Kuv32s srcStep = 0, dstStep = 0;
    Kuv32f* src = kuviMalloc_32f_C1(3, 2, &srcStep);
    Kuv32f* dst = kuviMalloc_32f_C1(3, 2, &dstStep);
    KuviSize size = {3, 2};
    int i, wrong = 0;
    if (src == NULL || dst == NULL) return 1;
    for (i = 0; i < 3; ++i) {
        src[i] = 1.0f;
        dst[i] = (Kuv32f)i;
        src[srcStep / 4 + i] = 2.0f;
        dst[dstStep / 4 + i] = 10.0f;
    }
    wrong |= kuviAdd_32f_C1IR(src, srcStep, dst, dstStep, size) != kuvStatusOk;
    wrong |= kuviAdd_32f_C1IR(NULL, srcStep, dst, dstStep, size) != kuvStatusNullPtr;
    for (i = 0; i < 3; ++i) {
        wrong |= dst[i] < (Kuv32f)i + 0.5f || dst[i] > (Kuv32f)i + 1.5f;
        wrong |= dst[dstStep / 4 + i] < 11.5f || dst[dstStep / 4 + i] > 12.5f;
    }
    kuviFree(src);
    kuviFree(dst);
    printf("%s, %s\n", kuvcvGetLibVersion()->libraryTitle, kuvcvGetLibVersion()->versionText);
    return wrong;
}
