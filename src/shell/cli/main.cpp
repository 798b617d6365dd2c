// lumivue-cli: the editor's engine without the editor, for scripts and batch
// work. Errors are printed with the program's own message and the exit
// status is the error's code.
#include <cstdio>
#include <cstring>

#include "shell/errors.h"
#include "shell/stderr_frontend.h"
#include "shell/tables.h"
#include "shell/version.h"

namespace {

// Exit status for a command line the tool cannot understand. It lies outside
// the error table so that scripts can tell it from an error of the work.
constexpr int kUsageStatus = 100;

const char kHelp[] =
    "Usage: lumivue-cli COMMAND [ARGUMENTS]\n"
    "\n"
    "Runs Lumivue's engine without the editor. Progress goes to stderr as a bar;\n"
    "errors are printed with the program's message and the exit status is the\n"
    "error's code (0 success, 1 out of memory, 11 aborted, 14 wrong image type, ...).\n"
    "A command line that cannot be understood exits with status 100.\n"
    "\n"
    "Commands:\n"
    "  --help, help        Show this text.\n"
    "                        lumivue-cli --help\n"
    "  --version, version  Show the program's version and the engine's libraries.\n"
    "                        lumivue-cli --version\n";

}  // namespace

int main(int argc, char** argv)
{
    lv::InitEngineTables();
    lv::StderrFrontEnd frontEnd;
    lv::ScopedFrontEnd installed(frontEnd);

    if (argc < 2 || !std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "help") ||
        !std::strcmp(argv[1], "-h")) {
        std::fputs(kHelp, stdout);
        return argc < 2 ? kUsageStatus : 0;
    }
    if (!std::strcmp(argv[1], "--version") || !std::strcmp(argv[1], "version")) {
        std::printf("lumivue-cli %s\n", lv::kVersionText);
        return 0;
    }
    std::fprintf(stderr, "lumivue-cli: unknown command '%s'; see lumivue-cli --help\n", argv[1]);
    return kUsageStatus;
}
