// Parameter files as a stranger could write them: any bytes behind any
// header must give a code, never a crash or a read outside memory.
#include <cstdint>
#include <string>
#include <vector>

#include "scratch_file.h"
#include "shell/errors.h"
#include "shell/paramfile.h"
#include "shell/text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const fuzz::ScratchFile file("paramfile-fuzz", "");
    if (!file.Write(data, size)) return 0;
    lv::ParamReader reader;
    if (lv::ParamReadOpen(reader, file.path, "Curve", lv::kErrCurveFile) == lv::kOk) {
        std::vector<std::string> tokens;
        while (lv::ParamReadLine(reader, tokens) == lv::kOk) {
            double value = 0.0;
            for (const std::string& token : tokens) (void)lv::ParseReal(token, value);
        }
    }
    return 0;
}
