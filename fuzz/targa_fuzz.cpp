// Targa files as a stranger could write them.
#include "reader_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    (void)lv::LooksLikeTarga(data, size);
    return fuzz::RunReader(lv::TargaRead, data, size);
}
