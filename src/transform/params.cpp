// The module kit: a parameter's declaration turned into its default, its
// parsing and range check, what it allows, and the reference.
#include <cmath>
#include <cstdio>

#include "shell/errors.h"
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
    for (const ParamDecl& param : module.params) {
        switch (param.type) {
        case ParamType::Int:
        case ParamType::Choice:
        case ParamType::Flag:
            if (param.field.integer)
                (*params).*param.field.integer = static_cast<int32_t>(param.defaultValue);
            break;
        case ParamType::Real:
            if (param.field.real) (*params).*param.field.real = param.defaultValue;
            break;
        case ParamType::File:   // no file: the record's own starting state
        case ParamType::Group:  // its members have their own
            break;
        }
    }
    return params;
}

const ParamDecl* FindParam(const TransformModule& module, const std::string& name)
{
    for (const ParamDecl& param : module.params)
        if (name == param.name) return &param;
    return nullptr;
}

std::vector<std::string> ParamChoiceLabels(const ParamDecl& param)
{
    return SplitBar(param.choiceLabels);
}

std::vector<std::string> ParamChoiceNames(const ParamDecl& param)
{
    if (*param.choices) return SplitBar(param.choices);
    std::vector<std::string> names = SplitBar(param.choiceLabels);
    for (std::string& name : names) {
        for (char& c : name) {
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
            if (c == ' ') c = '-';
        }
    }
    return names;
}

int32_t ParamInt(const ParamDecl& param, const TransformParams& params)
{
    return param.field.integer ? params.*param.field.integer : 0;
}

double ParamReal(const ParamDecl& param, const TransformParams& params)
{
    return param.field.real ? params.*param.field.real : 0.0;
}

bool ParamSetInt(const ParamDecl& param, TransformParams& params, int32_t value)
{
    if (!param.field.integer) return false;
    int32_t low = 0, high = 0;
    switch (param.type) {
    case ParamType::Int:
        low = static_cast<int32_t>(param.minimum);
        high = static_cast<int32_t>(param.maximum);
        break;
    case ParamType::Choice: high = static_cast<int32_t>(ParamChoiceLabels(param).size()) - 1; break;
    case ParamType::Flag: high = 1; break;
    default: return false;
    }
    if (value < low || value > high || params.*param.field.integer == value) return false;
    params.*param.field.integer = value;
    return true;
}

bool ParamSetReal(const ParamDecl& param, TransformParams& params, double value)
{
    if (param.type != ParamType::Real || !param.field.real || !std::isfinite(value) ||
        value < param.minimum || value > param.maximum || params.*param.field.real == value)
        return false;
    params.*param.field.real = value;
    return true;
}

std::string ParamAllowed(const ParamDecl& param)
{
    switch (param.type) {
    case ParamType::Int:
        return "an integer from " + Number(param.minimum, 0) + " to " + Number(param.maximum, 0);
    case ParamType::Real:
        return "a number from " + Number(param.minimum, param.decimals) + " to " +
               Number(param.maximum, param.decimals);
    case ParamType::Choice: {
        std::vector<std::string> names = ParamChoiceNames(param);
        if (param.firstCode != 0) {
            for (size_t i = 0; i < names.size(); ++i)
                names[i] += " (" + std::to_string(param.firstCode + static_cast<int32_t>(i)) + ")";
            return "one of " + JoinNames(names, ", ") + ", by name or code";
        }
        return "one of " + JoinNames(names, ", ");
    }
    case ParamType::Flag: return "no value";
    case ParamType::File:
        // A parameter file names its format and version ("Curve 1.0"); a
        // picture is any file the program reads.
        if (!*param.fileExtension) return std::string("a ") + param.fileKind + " file";
        return std::string("a \"") + param.fileKind + " 1.0\" file (" + param.fileExtension + ")";
    case ParamType::Group: {
        std::vector<std::string> members = SplitBar(param.members);
        return std::to_string(members.size()) + " integers " + JoinNames(members, ",") +
               " separated by commas, each as its own option allows";
    }
    }
    return "";
}

std::string ParamDefaultText(const ParamDecl& param, const TransformModule* module)
{
    switch (param.type) {
    case ParamType::Int: return Number(param.defaultValue, 0);
    case ParamType::Real: return Number(param.defaultValue, param.decimals);
    case ParamType::Choice: {
        const std::vector<std::string> names = ParamChoiceNames(param);
        const auto index = static_cast<size_t>(param.defaultValue);
        return index < names.size() ? names[index] : "";
    }
    case ParamType::Flag: return param.defaultValue != 0 ? "on" : "off";
    case ParamType::File: return "none";
    case ParamType::Group: {
        std::string joined;
        for (const std::string& name : SplitBar(param.members)) {
            const ParamDecl* member = module ? FindParam(*module, name) : nullptr;
            if (!member) return "";
            joined += (joined.empty() ? "" : ",") + ParamDefaultText(*member);
        }
        return joined;
    }
    }
    return "";
}

int32_t ParamSetText(const ParamDecl& param, TransformParams& params, const std::string& text,
                     std::string& problem)
{
    problem.clear();
    auto refuse = [&](const std::string& why) {
        problem = why + "; allowed: " + ParamAllowed(param);
        return kParamRefused;
    };
    switch (param.type) {
    case ParamType::Int: {
        int32_t value = 0;
        if (ParseInt(text, value) != 0) return refuse("'" + text + "' is not an integer");
        if (value < param.minimum || value > param.maximum)
            return refuse("'" + text + "' is out of range");
        params.*param.field.integer = value;
        return 0;
    }
    case ParamType::Real: {
        double value = 0;
        if (ParseReal(text, value) != 0 || !std::isfinite(value))
            return refuse("'" + text + "' is not a number");
        if (value < param.minimum || value > param.maximum)
            return refuse("'" + text + "' is out of range");
        params.*param.field.real = value;
        return 0;
    }
    case ParamType::Choice: {
        const std::vector<std::string> names = ParamChoiceNames(param);
        for (size_t i = 0; i < names.size(); ++i) {
            if (text == names[i]) {
                params.*param.field.integer = static_cast<int32_t>(i);
                return 0;
            }
        }
        int32_t code = 0;
        if (param.firstCode != 0 && ParseInt(text, code) == 0 && code >= param.firstCode &&
            code - param.firstCode < static_cast<int32_t>(names.size())) {
            params.*param.field.integer = code - param.firstCode;
            return 0;
        }
        return refuse("'" + text + "' is not a choice");
    }
    case ParamType::Flag: params.*param.field.integer = 1; return 0;
    case ParamType::File:
        if (text.empty()) return refuse("no file named");
        return param.field.load(params, text);
    case ParamType::Group: break;  // only with its module
    }
    return refuse("unknown kind of parameter");
}

int32_t ParamSetText(const TransformModule& module, const ParamDecl& param, TransformParams& params,
                     const std::string& text, std::string& problem)
{
    if (param.type != ParamType::Group) return ParamSetText(param, params, text, problem);
    const std::vector<std::string> members = SplitBar(param.members);
    std::vector<std::string> values;
    std::string value;
    for (char c : text + ",") {
        if (c == ',') {
            values.push_back(value);
            value.clear();
        } else {
            value += c;
        }
    }
    if (values.size() != members.size()) {
        problem = "'" + text + "' is not " + std::to_string(members.size()) +
                  " values; allowed: " + ParamAllowed(param);
        return kParamRefused;
    }
    // Each value is checked before any is set, so a refusal leaves the record alone.
    const std::unique_ptr<TransformParams> trial = CreateParams(module);
    if (!trial) return kErrOutOfMemory;
    for (size_t i = 0; i < members.size(); ++i) {
        const ParamDecl* member = FindParam(module, members[i]);
        if (!member || ParamSetText(*member, *trial, values[i], problem) != 0) {
            problem = "'" + values[i] + "' for " + members[i] + ": " + problem;
            return kParamRefused;
        }
    }
    for (size_t i = 0; i < members.size(); ++i)
        ParamSetText(*FindParam(module, members[i]), params, values[i], problem);
    return 0;
}

std::string CheckModule(const TransformModule& module)
{
    const std::string who = std::string(module.name) + ": ";
    if (!IsOptionName(module.name)) return who + "the name is not lower case with hyphens";
    if (!module.title || !*module.title) return who + "no title";
    if (!module.create || !module.worker) return who + "no record or no worker";
    for (size_t i = 0; i < module.params.size(); ++i) {
        const ParamDecl& p = module.params[i];
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
        case ParamType::Group: {
            const std::vector<std::string> members = SplitBar(p.members);
            if (members.size() < 2) return at + "a group of fewer than two";
            for (const std::string& name : members) {
                const ParamDecl* member = FindParam(module, name);
                if (!member || member->type != ParamType::Int)
                    return at + "'" + name + "' is not an integer parameter of the module";
            }
            if (p.inPanel) return at + "a group is the command line's; the panel has its members";
            break;
        }
        }
        if (p.type == ParamType::Choice || p.firstCode == 0) continue;
        return at + "a code for entries of no choice";
    }
    return "";
}

// What stands for an option's value in the reference.
static std::string ValueWord(const ParamDecl& param)
{
    switch (param.type) {
    case ParamType::Int: return " N";
    case ParamType::Real: return " X";
    case ParamType::Choice: return " CHOICE";
    case ParamType::Flag: return "";
    case ParamType::File: return " FILE";
    case ParamType::Group: {
        std::string word = " ";
        for (const char* c = param.members; *c; ++c)
            word += *c == '|' ? ',' : (*c >= 'a' && *c <= 'z') ? static_cast<char>(*c - 32) : *c;
        return word;
    }
    }
    return "";
}

std::string ModuleReference(const TransformModule& m, bool markdown)
{
    std::string out;
    if (markdown) {
        out += std::string("\n## ") + m.name + " (" + m.title + ")\n\n";
        if (*m.help) out += std::string(m.help) + "\n\n";
        if (m.params.empty()) out += "No parameters of its own.\n";
        for (const ParamDecl& p : m.params) {
            std::string help = p.help;
            if (!help.empty() && help[0] >= 'a' && help[0] <= 'z')
                help[0] = static_cast<char>(help[0] - 'a' + 'A');
            out += std::string("- `--") + p.name + ValueWord(p) + "`: " + help +
                   ". Allowed: " + ParamAllowed(p) + "; default: " + ParamDefaultText(p, &m) +
                   ".\n";
        }
        out += std::string("- Amount and mask: ") + (m.hasAmount ? "yes" : "no") + ".\n";
        out += std::string("\n```sh\nlumivue-cli apply ") + m.name +
               (*m.example ? std::string(" ") + m.example : "") + " in.tif out.tif\n```\n";
    } else {
        out += std::string(m.name) + "  (" + m.title + ")";
        if (*m.help) out += std::string("  ") + m.help;
        out += "\n";
        for (const ParamDecl& p : m.params) {
            out += std::string("    --") + p.name + ValueWord(p) + "  " + p.help + "; " +
                   ParamAllowed(p) + ", default " + ParamDefaultText(p, &m) + "\n";
        }
        if (m.hasAmount)
            out += "    --amount P, --mask FILE, --amount2 P  the Amount and its mask\n";
    }
    return out;
}

namespace {

std::string Html(const std::string& text)
{
    std::string out;
    for (char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
    return out;
}

}  // namespace

std::string ModuleHelpPage(const TransformModule& m, const std::string& picture)
{
    std::string out = "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>" +
                      Html(m.title) +
                      "</title>\n<link rel=\"stylesheet\" href=\"style.css\"></head>"
                      "<body>\n<h1>" +
                      Html(m.title) + "</h1>\n";
    if (*m.help) out += "<p>" + Html(m.help) + "</p>\n";
    if (!picture.empty())
        out += "<p><img src=\"" + Html(picture) + "\" alt=\"The " + Html(m.title) +
               " panel\" width=\"600\"></p>\n";
    out += std::string("<p>") +
           (m.hasAmount ? "The Amount, with its mask, sets how strongly the result replaces the "
                          "picture. "
                        : "") +
           "Preview shows the result, Apply makes a new window with it, OK does the same and "
           "closes the panel.</p>\n";
    if (!m.params.empty()) {
        out +=
            "<h2>Settings</h2>\n<table>\n<tr><th>Setting</th><th>What it does</th>"
            "<th>Allowed</th><th>Default</th></tr>\n";
        for (const ParamDecl& p : m.params) {
            std::string label = *p.label ? p.label : p.name;
            if (!label.empty() && label.back() == ':') label.pop_back();
            out += "<tr><td>" + Html(label) + "</td><td>" + Html(p.help) + "</td><td>" +
                   Html(ParamAllowed(p)) + "</td><td>" + Html(ParamDefaultText(p, &m)) +
                   "</td></tr>\n";
        }
        out += "</table>\n";
    }
    out += "<h2>From the command line</h2>\n<pre>" + Html(ModuleReference(m, false)) +
           "</pre>\n<pre>lumivue-cli apply " + Html(m.name) +
           (*m.example ? " " + Html(m.example) : std::string()) +
           " in.jpg out.jpg</pre>\n<p><a href=\"index.html\">Contents</a></p>\n</body></html>\n";
    return out;
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
    for (const TransformModule& m : Transforms()) out += ModuleReference(m, markdown);
    return out;
}

}  // namespace lv
