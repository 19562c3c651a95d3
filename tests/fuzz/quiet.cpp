// The reports of the code under test are printed, to nobody.
#include "tests/fuzz/target.h"

#include <cstdio>
#include <cstdlib>

int LLVMFuzzerInitialize(int*, char***) {
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        std::abort();
    }
    return 0;
}
