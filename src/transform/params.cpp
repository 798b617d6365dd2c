// The module kit: a parameter's declaration turned into its default, its
// parsing and range check, what it allows, and the reference.
#include <cmath>
#include <cstdio>

#include "shell/text.h"
#include "transform/registry.h"

namespace lv {

namespace {

std::vector<std::string> SplitBar(const char* text)
{
    std::vector<std::string> parts;
    if (!text || !*text) return parts;
    std::string part;
    for (const char* c = text;; ++c) {
        if (*c == '|' || *c == '\0') {
            parts.push_back(part);
            part.clear();
            if (*c == '\0') break;
        } else {
            part += *c;
        }
    }
    return parts;
}

std::string Number(double value, int32_t decimals)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", static_cast<int>(decimals), value);
    return text;
}

std::string JoinNames(const std::vector<std::string>& names, const char* between)
{
    std::string joined;
    for (size_t i = 0; i < names.size(); ++i) {
        if (i) joined += between;
        joined += names[i];
    }
    return joined;
}

bool IsOptionName(const char* name)
{
    if (!name || !*name || *name == '-') return false;
    for (const char* c = name; *c; ++c)
        if (!((*c >= 'a' && *c <= 'z') || (*c >= '0' && *c <= '9') || *c == '-')) return false;
    return true;
}

}  // namespace

std::unique_ptr<TransformParams> CreateParams(const TransformModule& module)
{
    std::unique_ptr<TransformParams> params = module.create ? module.create() : nullptr;
    if (!params) return nullptr;
    for (const ParamSpec& spec : module.params) {
        switch (spec.type) {
        case ParamType::Int:
        case ParamType::Choice:
        case ParamType::Flag:
            if (spec.field.integer)
                (*params).*spec.field.integer = static_cast<int32_t>(spec.defaultValue);
            break;
        case ParamType::Real:
            if (spec.field.real) (*params).*spec.field.real = spec.defaultValue;
            break;
        case ParamType::File: break;  // no file: the record's own starting state
        }
    }
    return params;
}

const ParamSpec* FindParam(const TransformModule& module, const std::string& name)
{
    for (const ParamSpec& spec : module.params)
        if (name == spec.name) return &spec;
    return nullptr;
}

std::vector<std::string> ParamChoiceLabels(const ParamSpec& spec)
{
    return SplitBar(spec.choiceLabels);
}

std::vector<std::string> ParamChoiceNames(const ParamSpec& spec)
{
    if (*spec.choices) return SplitBar(spec.choices);
    std::vector<std::string> names = SplitBar(spec.choiceLabels);
    for (std::string& name : names) {
        for (char& c : name) {
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
            if (c == ' ') c = '-';
        }
    }
    return names;
}

int32_t ParamInt(const ParamSpec& spec, const TransformParams& params)
{
    return spec.field.integer ? params.*spec.field.integer : 0;
}

double ParamReal(const ParamSpec& spec, const TransformParams& params)
{
    return spec.field.real ? params.*spec.field.real : 0.0;
}

bool ParamSetInt(const ParamSpec& spec, TransformParams& params, int32_t value)
{
    if (!spec.field.integer) return false;
    int32_t low = 0, high = 0;
    switch (spec.type) {
    case ParamType::Int:
        low = static_cast<int32_t>(spec.minimum);
        high = static_cast<int32_t>(spec.maximum);
        break;
    case ParamType::Choice: high = static_cast<int32_t>(ParamChoiceLabels(spec).size()) - 1; break;
    case ParamType::Flag: high = 1; break;
    default: return false;
    }
    if (value < low || value > high || params.*spec.field.integer == value) return false;
    params.*spec.field.integer = value;
    return true;
}

bool ParamSetReal(const ParamSpec& spec, TransformParams& params, double value)
{
    if (spec.type != ParamType::Real || !spec.field.real || !std::isfinite(value) ||
        value < spec.minimum || value > spec.maximum || params.*spec.field.real == value)
        return false;
    params.*spec.field.real = value;
    return true;
}

std::string ParamAllowed(const ParamSpec& spec)
{
    switch (spec.type) {
    case ParamType::Int:
        return "an integer from " + Number(spec.minimum, 0) + " to " + Number(spec.maximum, 0);
    case ParamType::Real:
        return "a number from " + Number(spec.minimum, spec.decimals) + " to " +
               Number(spec.maximum, spec.decimals);
    case ParamType::Choice: return "one of " + JoinNames(ParamChoiceNames(spec), ", ");
    case ParamType::Flag: return "no value";
    case ParamType::File:
        return std::string("a \"") + spec.fileKind + " 1.0\" file" +
               (*spec.fileExtension ? std::string(" (") + spec.fileExtension + ")" : "");
    }
    return "";
}

std::string ParamDefaultText(const ParamSpec& spec)
{
    switch (spec.type) {
    case ParamType::Int: return Number(spec.defaultValue, 0);
    case ParamType::Real: return Number(spec.defaultValue, spec.decimals);
    case ParamType::Choice: {
        const std::vector<std::string> names = ParamChoiceNames(spec);
        const auto index = static_cast<size_t>(spec.defaultValue);
        return index < names.size() ? names[index] : "";
    }
    case ParamType::Flag: return spec.defaultValue != 0 ? "on" : "off";
    case ParamType::File: return "none";
    }
    return "";
}

int32_t ParamSetText(const ParamSpec& spec, TransformParams& params, const std::string& text,
                     std::string& problem)
{
    problem.clear();
    auto refuse = [&](const std::string& why) {
        problem = why + "; allowed: " + ParamAllowed(spec);
        return kParamRefused;
    };
    switch (spec.type) {
    case ParamType::Int: {
        int32_t value = 0;
        if (ParseInt(text, value) != 0) return refuse("'" + text + "' is not an integer");
        if (value < spec.minimum || value > spec.maximum)
            return refuse("'" + text + "' is out of range");
        params.*spec.field.integer = value;
        return 0;
    }
    case ParamType::Real: {
        double value = 0;
        if (ParseReal(text, value) != 0 || !std::isfinite(value))
            return refuse("'" + text + "' is not a number");
        if (value < spec.minimum || value > spec.maximum)
            return refuse("'" + text + "' is out of range");
        params.*spec.field.real = value;
        return 0;
    }
    case ParamType::Choice: {
        const std::vector<std::string> names = ParamChoiceNames(spec);
        for (size_t i = 0; i < names.size(); ++i) {
            if (text == names[i]) {
                params.*spec.field.integer = static_cast<int32_t>(i);
                return 0;
            }
        }
        return refuse("'" + text + "' is not a choice");
    }
    case ParamType::Flag:
        params.*spec.field.integer = 1;
        return 0;
    case ParamType::File:
        if (text.empty()) return refuse("no file named");
        return spec.field.load(params, text);
    }
    return refuse("unknown kind of parameter");
}

std::string CheckModule(const TransformModule& module)
{
    const std::string who = std::string(module.name) + ": ";
    if (!IsOptionName(module.name)) return who + "the name is not lower case with hyphens";
    if (!module.title || !*module.title) return who + "no title";
    if (!module.create || !module.worker) return who + "no record or no worker";
    for (size_t i = 0; i < module.params.size(); ++i) {
        const ParamSpec& p = module.params[i];
        const std::string at = who + "--" + p.name + ": ";
        if (!IsOptionName(p.name)) return at + "the name is not lower case with hyphens";
        for (size_t j = 0; j < i; ++j)
            if (std::string(p.name) == module.params[j].name) return at + "declared twice";
        for (const char* reserved : {"amount", "amount2", "mask", "quality", "sampling", "format"})
            if (std::string(p.name) == reserved) return at + "the name is the command line's own";
        if (!*p.help) return at + "no help";
        switch (p.type) {
        case ParamType::Int:
        case ParamType::Real:
            if ((p.type == ParamType::Int ? !p.field.integer : !p.field.real) || p.field.load)
                return at + "no field of its type";
            if (p.minimum > p.maximum || p.defaultValue < p.minimum || p.defaultValue > p.maximum)
                return at + "the default is outside the range";
            if (p.type == ParamType::Int &&
                (p.minimum != std::trunc(p.minimum) || p.maximum != std::trunc(p.maximum) ||
                 p.defaultValue != std::trunc(p.defaultValue)))
                return at + "an integer parameter with a fractional bound or default";
            break;
        case ParamType::Choice: {
            if (!p.field.integer) return at + "no field of its type";
            const size_t labels = ParamChoiceLabels(p).size();
            if (labels == 0) return at + "no choices";
            if (*p.choices && SplitBar(p.choices).size() != labels)
                return at + "as many names as labels are needed";
            for (const std::string& name : ParamChoiceNames(p))
                if (!IsOptionName(name.c_str())) return at + "a choice's name is not lower case";
            if (p.defaultValue < 0 || p.defaultValue >= static_cast<double>(labels) ||
                p.defaultValue != std::trunc(p.defaultValue))
                return at + "the default is not an entry";
            break;
        }
        case ParamType::Flag:
            if (!p.field.integer) return at + "no field of its type";
            if (p.defaultValue != 0 && p.defaultValue != 1) return at + "the default is not 0 or 1";
            break;
        case ParamType::File:
            if (!p.field.load) return at + "no reader";
            if (!*p.fileKind) return at + "no file kind";
            if (p.inPanel) return at + "a file is the command line's; the panel loads its own";
            break;
        }
    }
    return "";
}

// What stands for an option's value in the reference.
static const char* ValueWord(const ParamSpec& spec)
{
    switch (spec.type) {
    case ParamType::Int: return " N";
    case ParamType::Real: return " X";
    case ParamType::Choice: return " CHOICE";
    case ParamType::Flag: return "";
    case ParamType::File: return " FILE";
    }
    return "";
}

std::string TransformReference(bool markdown)
{
    std::string out;
    if (markdown) {
        out +=
            "# Transformations from the command line\n\n"
            "Made by `lumivue-cli list --markdown` from the modules' own declarations; do\n"
            "not edit by hand. Every transformation runs as\n"
            "`lumivue-cli apply NAME [OPTIONS] IN OUT` or, for a batch,\n"
            "`lumivue-cli apply NAME [OPTIONS] IN... DIR`. Those with an Amount also take\n"
            "`--amount P` (percent, default 100) and `--mask FILE` with `--amount2 P`.\n";
    }
    for (const TransformModule& m : Transforms()) {
        if (markdown) {
            out += std::string("\n## ") + m.name + " (" + m.title + ")\n\n";
            if (*m.help) out += std::string(m.help) + "\n\n";
            if (m.params.empty()) out += "No parameters of its own.\n";
            for (const ParamSpec& p : m.params) {
                std::string help = p.help;
                if (!help.empty() && help[0] >= 'a' && help[0] <= 'z')
                    help[0] = static_cast<char>(help[0] - 'a' + 'A');
                out += std::string("- `--") + p.name + ValueWord(p) + "`: " + help +
                       ". Allowed: " + ParamAllowed(p) + "; default: " + ParamDefaultText(p) +
                       ".\n";
            }
            out += std::string("- Amount and mask: ") + (m.hasAmount ? "yes" : "no") + ".\n";
            out += std::string("\n```sh\nlumivue-cli apply ") + m.name +
                   (*m.example ? std::string(" ") + m.example : "") + " in.tif out.tif\n```\n";
        } else {
            out += std::string(m.name) + "  (" + m.title + ")";
            if (*m.help) out += std::string("  ") + m.help;
            out += "\n";
            for (const ParamSpec& p : m.params) {
                out += std::string("    --") + p.name + ValueWord(p) + "  " + p.help + "; " +
                       ParamAllowed(p) + ", default " + ParamDefaultText(p) + "\n";
            }
            if (m.hasAmount)
                out += "    --amount P, --mask FILE, --amount2 P  the Amount and its mask\n";
        }
    }
    return out;
}

}  // namespace lv
