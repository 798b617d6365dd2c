// Parameter files as a stranger could write them: any bytes behind any
// header must give a code, never a crash or a read outside memory.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "shell/errors.h"
#include "shell/paramfile.h"
#include "shell/text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const std::string path = "/tmp/lumivue-paramfile-fuzz-" + std::to_string(::getpid());
    std::FILE* out = std::fopen(path.c_str(), "wb");
    if (!out) return 0;
    std::fwrite(data, 1, size, out);
    std::fclose(out);
    lv::ParamReader reader;
    if (lv::ParamReadOpen(reader, path, "Curve", lv::kErrCurveFile) == lv::kOk) {
        std::vector<std::string> tokens;
        while (lv::ParamReadLine(reader, tokens) == lv::kOk) {
            double value = 0.0;
            for (const std::string& token : tokens) (void)lv::ParseReal(token, value);
        }
    }
    return 0;
}
