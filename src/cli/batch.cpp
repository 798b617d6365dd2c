#include "cli/batch.h"

#include <sys/stat.h>

#include <cstdio>

#include "files/formats.h"
#include "shell/errors.h"
#include "shell/stderr_frontend.h"
#include "shell/text.h"

namespace lv::cli {

namespace {

bool IsDirectory(const std::string& path)
{
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string BaseName(const std::string& path)
{
    const size_t cut = path.find_last_of('/');
    return cut == std::string::npos ? path : path.substr(cut + 1);
}

}  // namespace

bool PlanJobs(const std::vector<std::string>& operands, const std::string& format,
              std::vector<Job>& jobs, bool& batch, std::string& problem)
{
    jobs.clear();
    if (operands.size() < 2) {
        problem = "give an input and an output, or inputs and a folder";
        return false;
    }
    const std::string& last = operands.back();
    batch = operands.size() > 2 || IsDirectory(last);
    if (!batch) {
        if (!format.empty()) {
            problem = "--format names the outputs of a batch into a folder; here the output's "
                      "extension says it";
            return false;
        }
        jobs.push_back({operands[0], last});
        return true;
    }
    if (!IsDirectory(last)) {
        problem = "the last of several files must be a folder: " + last + " is not one";
        return false;
    }
    for (size_t i = 0; i + 1 < operands.size(); ++i) {
        std::string name = BaseName(operands[i]);
        if (!format.empty()) name = ReplaceExtension(name, format);
        const std::string output = JoinPath(last, name);
        for (const Job& earlier : jobs) {
            if (earlier.output == output) {
                problem = earlier.input + " and " + operands[i] + " would both be written to " +
                          output;
                return false;
            }
        }
        jobs.push_back({operands[i], output});
    }
    return true;
}

void PrintFailure(const Failure& failure)
{
    std::string text = failure.problem.empty() ? ErrorText(failure.code) : failure.problem;
    if (failure.problem.empty() && !ErrorDetail().empty()) text += " (" + ErrorDetail() + ")";
    std::fprintf(stderr, "lumivue-cli: %s: %s\n", failure.path.c_str(), text.c_str());
}

int UsageError(const std::string& problem)
{
    std::fprintf(stderr, "lumivue-cli: %s\n", problem.c_str());
    return kUsageStatus;
}

Failure CheckOutputs(const std::vector<Job>& jobs)
{
    for (const Job& job : jobs)
        if (!SaveFilterFromName(job.output)) return {kErrUnknownFileType, job.output, {}};
    return {};
}

int RunJobs(const std::vector<Job>& jobs, bool batch, const std::function<Failure(const Job&)>& run)
{
    int first = 0;
    for (const Job& job : jobs) {
        // Interrupted: the files not begun are left alone.
        if (StderrFrontEnd::CancelRequested()) return first ? first : kErrAborted;
        ClearErrorDetail();
        const Failure failure = run(job);
        if (failure.code) {
            PrintFailure(failure);
            if (!first) first = failure.code;
            if (failure.code == kErrAborted) return first;
        } else if (batch) {
            std::printf("%s -> %s\n", job.input.c_str(), job.output.c_str());
        }
    }
    return first;
}

Failure ReadPicture(const std::string& path, Image& image, bool showBox)
{
    const int32_t type = FileTypeFromName(path);
    if (type < 0) return {kErrUnknownFileType, path, {}};
    if (int32_t code = ReadImageFile(path, type, image, showBox)) return {code, path, {}};
    return {};
}

}  // namespace lv::cli
