// The work of convert, negative and apply: one input to one output, or
// several inputs into a folder, each output named after its input. The
// files are planned, the outputs checked, and every failure reported here
// once, naming the file it is about.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "files/metadata.h"
#include "image/image.h"

namespace lv::cli {

// Exit status of a command line that cannot be understood. It lies outside
// the error table so that scripts can tell it from an error of the work.
inline constexpr int kUsageStatus = 100;

struct Job {
    std::string input, output;
};

// "IN OUT" is one job, unless OUT is an existing folder; "IN... DIR" is a
// batch: DIR must be a folder, and each output is its input's name in it,
// with `format`'s extension when one is given. False with `problem` on a
// mistake: too few files, no such folder, --format without a folder, or two
// inputs that would be written to the same output.
bool PlanJobs(const std::vector<std::string>& operands, const std::string& format,
              std::vector<Job>& jobs, bool& batch, std::string& problem);

// Why a job failed: a code of the error table (or kUsageStatus) and the file
// it is about; `problem` replaces the code's text when set.
struct Failure {
    int32_t code = 0;
    std::string path;
    std::string problem;
};

// Prints "lumivue-cli: PATH: Message (reason)", the reason being what the
// failing call left in ErrorDetail().
void PrintFailure(const Failure& failure);
// Prints a command-line mistake as one line and returns kUsageStatus.
int UsageError(const std::string& problem);

// Before any input is read: every output must name a format that can be
// written (71 "Unknown file type" naming the output otherwise).
Failure CheckOutputs(const std::vector<Job>& jobs);

// Runs the jobs, printing "IN -> OUT" after each success of a batch and each
// failure as it comes. With `parallel` above 1, up to that many files are
// done side by side, each in a process of its own sharing the cores (lines
// may then come in another order). The exit status: 0, or the code of the
// first job, in the order given, that failed.
int RunJobs(const std::vector<Job>& jobs, bool batch, int32_t parallel,
            const std::function<Failure(const Job&)>& run);

// The --jobs option: how many files of a batch are done side by side; the
// machine's cores when not given.
int32_t DefaultJobs();

// Reads a picture for a job; 71 at once for a name whose extension is no
// file type, else the reader's code. The failure names `path`.
Failure ReadPicture(const std::string& path, Image& image, bool showBox,
                    PictureMetadata* metadata = nullptr);

}  // namespace lv::cli
