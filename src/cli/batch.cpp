#include "cli/batch.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <map>

#include <cstdio>

#include "files/formats.h"
#include "files/metadata.h"
#include "image/threads.h"
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

namespace {

// One job where the command runs: its failure printed, its code returned.
int RunOne(const Job& job, bool batch, const std::function<Failure(const Job&)>& run)
{
    ClearErrorDetail();
    const Failure failure = run(job);
    if (failure.code) {
        PrintFailure(failure);
    } else if (batch) {
        std::printf("%s -> %s\n", job.input.c_str(), job.output.c_str());
    }
    return failure.code;
}

}  // namespace

int32_t DefaultJobs() { return ThreadCount(); }

int RunJobs(const std::vector<Job>& jobs, bool batch, int32_t parallel,
            const std::function<Failure(const Job&)>& run)
{
    std::vector<int> codes(jobs.size(), 0);
    if (parallel <= 1 || jobs.size() < 2) {
        for (size_t i = 0; i < jobs.size(); ++i) {
            // Interrupted: the files not begun are left alone.
            if (StderrFrontEnd::CancelRequested()) {
                codes[i] = kErrAborted;
                break;
            }
            codes[i] = RunOne(jobs[i], batch, run);
            if (codes[i] == kErrAborted) break;
        }
    } else {
        // Side by side: a process a file, the cores shared among them, and
        // no bars, which would overwrite each other.
        StderrFrontEnd::StopBars();
        const int32_t threads = std::max(1, ThreadCount() / parallel);
        std::map<pid_t, size_t> running;
        std::vector<bool> finished(jobs.size(), false);
        size_t next = 0, told = 0;
        // Successes are told in the order of the files.
        auto tell = [&] {
            for (; told < jobs.size() && finished[told]; ++told)
                if (batch && codes[told] == 0)
                    std::printf("%s -> %s\n", jobs[told].input.c_str(), jobs[told].output.c_str());
        };
        while (next < jobs.size() || !running.empty()) {
            while (static_cast<int32_t>(running.size()) < parallel && next < jobs.size() &&
                   !StderrFrontEnd::CancelRequested()) {
                std::fflush(stdout);
                std::fflush(stderr);
                const pid_t child = ::fork();
                if (child == 0) {
                    SetThreadCount(threads);
                    // The "IN -> OUT" lines come from the command, in order.
                    const int code = RunOne(jobs[next], false, run);
                    std::fflush(stdout);
                    std::fflush(stderr);
                    ::_exit(code);
                }
                if (child < 0) {
                    codes[next] = RunOne(jobs[next], false, run);  // no process to be had
                    finished[next] = true;
                } else {
                    running[child] = next;
                }
                ++next;
            }
            tell();
            if (running.empty()) {
                if (next >= jobs.size()) break;
                // Interrupted before the rest began.
                for (; next < jobs.size(); ++next) codes[next] = kErrAborted;
                break;
            }
            int status = 0;
            const pid_t done = ::waitpid(-1, &status, 0);
            if (done < 0) {
                if (errno == EINTR) continue;
                break;
            }
            const auto found = running.find(done);
            if (found == running.end()) continue;
            codes[found->second] = WIFEXITED(status) ? WEXITSTATUS(status) : kErrAborted;
            finished[found->second] = true;
            running.erase(found);
        }
        tell();
    }
    for (int code : codes)
        if (code) return code;
    return 0;
}

Failure ReadPicture(const std::string& path, Image& image, bool showBox,
                    PictureMetadata* metadata)
{
    const int32_t type = FileTypeFromName(path);
    if (type < 0) return {kErrUnknownFileType, path, {}};
    if (int32_t code = ReadImageFile(path, type, image, showBox)) return {code, path, {}};
    PictureMetadata read;
    if (int32_t code = MetadataRead(path, read)) return {code, path, {}};
    if (OrientOnOpen())
        if (int32_t code = ApplyOrientation(image, read.orientation)) return {code, path, {}};
    if (metadata) *metadata = std::move(read);
    return {};
}

}  // namespace lv::cli
