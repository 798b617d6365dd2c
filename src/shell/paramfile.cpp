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

namespace {

// A name for the temporary file in the target's folder, hidden, and unique
// to this process and attempt.
std::string TemporaryName(const std::string& path, int32_t attempt)
{
    size_t cut = path.find_last_of("/\\");
    std::string folder = cut == std::string::npos ? std::string() : path.substr(0, cut + 1);
    std::string name = cut == std::string::npos ? path : path.substr(cut + 1);
    return folder + "." + name + "." + std::to_string(::getpid()) + "-" + std::to_string(attempt) +
           ".tmp";
}

int32_t CreateFailure(int error)
{
    return error == EACCES || error == EPERM || error == EROFS ? kErrReadOnlyDisk
                                                               : kErrCannotCreate;
}

void Discard(ParamWriter& writer)
{
    FileClose(writer.file);
    if (!writer.tempPath.empty()) FileDelete(writer.tempPath);
    writer.tempPath.clear();
}

}  // namespace

ParamWriter::~ParamWriter() { Discard(*this); }

int32_t ParamWriteOpen(ParamWriter& writer, const std::string& path, std::string_view kind)
{
    Discard(writer);
    writer.error = kOk;
    try {
        writer.path = path;
        // Exclusive creation, so that a stale or foreign file of the same name
        // is never overwritten; a few attempts get past leftovers.
        for (int32_t attempt = 0; attempt < 100; ++attempt) {
            std::string candidate = TemporaryName(path, attempt);
            std::FILE* stream = std::fopen(candidate.c_str(), "wbx");
            if (stream) {
                writer.file.stream = stream;
                writer.tempPath = std::move(candidate);
                break;
            }
            if (errno != EEXIST) {
                writer.error = CreateFailure(errno);
                return writer.error;
            }
        }
        if (writer.tempPath.empty()) {
            writer.error = kErrCannotCreate;
            return writer.error;
        }
        return ParamWriteText(writer, std::string(kind) + " 1.0");
    } catch (const std::bad_alloc&) {
        Discard(writer);
        writer.error = kErrOutOfMemory;
        return writer.error;
    }
}

int32_t ParamWriteText(ParamWriter& writer, std::string_view text)
{
    if (writer.error != kOk) return writer.error;
    if (!writer.file.stream) {
        writer.error = kErrWriting;
        return writer.error;
    }
    writer.error = WriteLine(writer.file, text);
    return writer.error;
}

int32_t ParamWriteCommit(ParamWriter& writer)
{
    if (writer.error == kOk && !writer.file.stream) writer.error = kErrCannotCreate;
    if (writer.error == kOk) {
        // Flush to the disk before the rename, so that a crash cannot leave
        // an empty file under the target's name.
        if (std::fflush(writer.file.stream) != 0 || ::fsync(fileno(writer.file.stream)) != 0) {
            writer.error = kErrWriting;
        }
    }
    if (writer.error == kOk && FileClose(writer.file) != kOk) writer.error = kErrWriting;
    if (writer.error == kOk && std::rename(writer.tempPath.c_str(), writer.path.c_str()) != 0) {
        writer.error = CreateFailure(errno);
    }
    if (writer.error != kOk) {
        Discard(writer);
        return writer.error;
    }
    writer.tempPath.clear();
    return kOk;
}

}  // namespace lv
