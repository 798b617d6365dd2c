// The command line's options: each command says which it takes, and one
// parser reads them, so every mistake is told the same way. An option is
// long and lower case ("--quality 90" or "--quality=90"); anything else
// that starts with "-" is a mistake, never a file name; "--" ends the
// options.
#pragma once

#include <string>
#include <vector>

namespace lv::cli {

struct Option {
    std::string name;     // without the dashes: "quality"
    bool takesValue;      // false: a switch
    std::string allowed;  // what its value may be: "an integer from 0 to 100"
};

struct GivenOption {
    std::string name;  // the option's name, without the dashes
    std::string value;
};

struct CommandLine {
    std::vector<GivenOption> options;  // in the order given
    std::vector<std::string> operands;  // the files
};

// Reads `args` against the options `allowed`. False on a mistake, with
// `problem` naming the option and saying what is allowed; `command` names
// the command in it ("apply negative").
bool ParseCommandLine(const std::vector<std::string>& args, const std::vector<Option>& allowed,
                      const std::string& command, CommandLine& line, std::string& problem);

// The value of an option given on the line, or null (the last one given
// wins).
const std::string* OptionValue(const CommandLine& line, const std::string& name);

// A percentage from 0 to 100, a number ("12.5" is allowed). False when it
// is not.
bool ParsePercent(const std::string& text, double& percent);

}  // namespace lv::cli
