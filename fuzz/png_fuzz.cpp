// PNG files as a stranger could write them, read as Open reads them.
#include "file_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return fuzz::RunFile(lv::kTypePng, data, size);
}
