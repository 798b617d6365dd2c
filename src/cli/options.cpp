#include "cli/options.h"

#include <cmath>

#include "shell/text.h"

namespace lv::cli {

namespace {

std::string Names(const std::vector<Option>& allowed)
{
    if (allowed.empty()) return "none";
    std::string names;
    for (const Option& o : allowed) names += (names.empty() ? "--" : ", --") + o.name;
    return names;
}

}  // namespace

bool ParseCommandLine(const std::vector<std::string>& args, const std::vector<Option>& allowed,
                      const std::string& command, CommandLine& line, std::string& problem)
{
    bool optionsEnded = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (optionsEnded || arg.empty() || arg[0] != '-') {
            line.operands.push_back(arg);
            continue;
        }
        if (arg == "--") {
            optionsEnded = true;
            continue;
        }
        std::string name = arg.rfind("--", 0) == 0 ? arg.substr(2) : std::string();
        std::string value;
        const size_t equals = name.find('=');
        const bool inlineValue = equals != std::string::npos;
        if (inlineValue) {
            value = name.substr(equals + 1);
            name.erase(equals);
        }
        const Option* option = nullptr;
        for (const Option& o : allowed)
            if (!name.empty() && o.name == name) option = &o;
        if (!option) {
            const std::string shown = inlineValue ? arg.substr(0, arg.find('=')) : arg;
            problem = "unknown option " + shown + " for " + command + "; allowed: " + Names(allowed);
            return false;
        }
        if (!option->takesValue) {
            if (inlineValue) {
                problem = "--" + name + " takes no value";
                return false;
            }
        } else if (!inlineValue) {
            if (i + 1 >= args.size()) {
                problem = "--" + name + " needs a value: " + option->allowed;
                return false;
            }
            value = args[++i];
        }
        line.options.push_back({option->name, value});
    }
    return true;
}

const std::string* OptionValue(const CommandLine& line, const std::string& name)
{
    const std::string* value = nullptr;
    for (const GivenOption& given : line.options)
        if (given.name == name) value = &given.value;
    return value;
}

bool ParsePercent(const std::string& text, double& percent)
{
    double value = 0;
    if (text.find('%') != std::string::npos || ParseReal(text, value) != 0 ||
        !std::isfinite(value) || value < 0 || value > 100)
        return false;
    percent = value;
    return true;
}

}  // namespace lv::cli
