#include "shell/paramfile.h"

#include <cerrno>
#include <cstdio>
#include <new>

#include <unistd.h>

#include "shell/errors.h"

namespace lv {

int32_t ParamReadOpen(ParamReader& reader, const std::string& path, std::string_view kind,
                      int32_t formatError)
{
    if (int32_t code = FileOpenRead(path, reader.file)) return code;
    int32_t code = ReadLine(reader.file, reader.line, kParamHeaderLimit);
    if (code == kErrEndOfFile) code = formatError;
    if (code != kOk) {
        FileClose(reader.file);
        return code;
    }
    std::vector<std::string> tokens;
    if (Tokenize(reader.line, tokens) != 2 || tokens[0] != kind || tokens[1] != "1.0") {
        FileClose(reader.file);
        return formatError;
    }
    return kOk;
}

int32_t ParamReadLine(ParamReader& reader, std::vector<std::string>& tokens)
{
    tokens.clear();
    for (;;) {
        if (int32_t code = ReadLine(reader.file, reader.line, kParamLineLimit)) return code;
        if (Tokenize(reader.line, tokens) > 0) return kOk;
    }
}

int32_t ParamWriteOpen(ParamWriter& writer, const std::string& path, std::string_view kind)
{
    writer.error = SafeWriteOpen(writer.write, path);
    if (writer.error != kOk) return writer.error;
    return ParamWriteText(writer, std::string(kind) + " 1.0");
}

int32_t ParamWriteText(ParamWriter& writer, std::string_view text)
{
    if (writer.error != kOk) return writer.error;
    if (!writer.write.file.stream) {
        writer.error = kErrWriting;
        return writer.error;
    }
    writer.error = WriteLine(writer.write.file, text);
    return writer.error;
}

int32_t ParamWriteCommit(ParamWriter& writer)
{
    if (writer.error == kOk) writer.error = SafeWriteCommit(writer.write);
    // 9, a close that failed, is a write that failed to this reader.
    if (writer.error == kErrClosing) writer.error = kErrWriting;
    SafeWriteDiscard(writer.write);
    return writer.error;
}

}  // namespace lv
