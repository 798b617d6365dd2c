// The registry of transformations. Each module registers itself from its own
// file: its name for the command line, its title, its parameters (each
// declared once, with the field it fills, its range, default and texts), the
// size of what it makes, and its worker. The editor's panels, lumivue-cli's
// "apply" and "list", and the reference in docs/transformations.md all come
// from these declarations.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "image/image.h"
#include "image/window.h"
#include "transform/amount.h"

namespace lv {

// What a parameter holds, and so how the command line, the panel and the
// reference show it.
enum class ParamType {
    Int,     // an integer in [minimum, maximum]; an Integer field in the panel
    Real,    // a number in [minimum, maximum]; an edit box
    Choice,  // the index of one of `choiceLabels`; a popup list
    Flag,    // 0 or 1; a check box; on the command line an option without a value
    File,    // a parameter file read into the record; the command line's only
    // Several Int parameters given at once, separated by commas
    // ("--box 10,20,300,200" for --x1 --y1 --x2 --y2); the command line's only.
    Group,
};

// A module's parameter record; its head is the Amount block of its Amount
// control. Modules derive their own.
struct TransformParams {
    AmountBlock amount;
    virtual ~TransformParams() = default;
};

// Where a parameter goes in its module's record: a pointer to the member,
// seen from the record's base, or for a file the function that reads one.
struct ParamField {
    int32_t TransformParams::*integer = nullptr;  // Int, Choice and Flag
    double TransformParams::*real = nullptr;      // Real
    // File: reads the file at `path` into the record; 0, or the file's own
    // code (4 when it cannot be opened, 16 for a bad curve, ...).
    int32_t (*load)(TransformParams& params, const std::string& path) = nullptr;
};

// The field of a module's record that an Int, Choice or Flag parameter
// fills: `Field(&BlurParams::radius)`.
template <class Record>
ParamField Field(int32_t Record::*member)
{
    static_assert(std::is_base_of_v<TransformParams, Record>);
    return {.integer = static_cast<int32_t TransformParams::*>(member)};
}

// The field a Real parameter fills.
template <class Record>
ParamField Field(double Record::*member)
{
    static_assert(std::is_base_of_v<TransformParams, Record>);
    return {.real = static_cast<double TransformParams::*>(member)};
}

// The reader of a File parameter.
inline ParamField Loader(int32_t (*load)(TransformParams& params, const std::string& path))
{
    return {.load = load};
}

// One parameter, declared once, with designated initialisers. The kit
// parses, range-checks and sets it; the record's defaults, the command
// line's option, the panel's row, `lumivue-cli list` and the reference in
// docs/transformations.md all come from this.
struct ParamDecl {
    const char* name = "";  // the option, lower case with hyphens: "color-space"
    ParamType type = ParamType::Int;
    ParamField field = {};
    double minimum = 0;       // Int and Real: the range, both ends allowed
    double maximum = 0;
    double defaultValue = 0;  // Int and Real; Choice: the entry's index; Flag: 0 or 1
    int32_t decimals = 0;     // Real: the places the panel and the reference show
    // Choice: the panel's texts, "HSV V|HSL L"; the command line takes each in
    // lower case with spaces as hyphens, unless `choices` names them itself.
    const char* choiceLabels = "";
    const char* choices = "";   // Choice: the command line's names, "hsv|hsl"
    // Choice: when not 0, the command line also takes each entry's code,
    // this number for the first and one more for each next ("200" for "copy").
    int32_t firstCode = 0;
    const char* members = "";   // Group: the Int parameters it sets, in order, "x1|y1|x2|y2"
    // File: the file's format, "Curve" for ".crv" files; with no extension,
    // what any file the program reads holds, "picture".
    const char* fileKind = "";
    const char* fileExtension = "";  // File: ".crv"
    const char* label = "";     // the panel's label, "Color Space:"
    const char* help = "";      // one line for the command line's list and the reference
    bool inPanel = true;        // false: the command line's alone; the panel sets it its own way
};

// A record of the module's type, for `create`: `.create = NewParams<BlurParams>`.
// Null when memory is short. The kit sets the declared defaults after.
template <class Record>
std::unique_ptr<TransformParams> NewParams()
{
    return std::unique_ptr<TransformParams>(new (std::nothrow) Record());
}

// What the frame hands a worker; see docs/architecture.md.
struct TransformArgs {
    const Image* source = nullptr;  // the input picture, or null
    Image* destination = nullptr;   // a preview's display copy, or the result's image
    ImageWindow* outputTarget = nullptr;
    TransformParams* params = nullptr;
    bool toImage = false;  // true: the full result, raw pixels
    int32_t outWidth = 0, outHeight = 0;
    int32_t sourceX = 0, sourceY = 0;  // where the rectangle starts in the input
    int32_t zoom = 1;
    int32_t rectLeft = 0, rectTop = 0, rectRight = 0, rectBottom = 0;
    int32_t width = 0, height = 0;  // output pixels to compute
};

using TransformWorker = int32_t (*)(const TransformArgs& args);

// A transformation, registered from its own file.
struct TransformModule {
    const char* name = "";   // the command line's: "brightness-curve"
    const char* title = "";  // "Brightness Curve": the panel's title and the progress box's
    // The menu command that opens its panel (its panel kind is the command
    // table's); 0 for a module of the command line alone.
    int32_t commandId = 0;
    bool hasAmount = true;
    std::vector<ParamDecl> params = {};
    // A record of the module's type (`NewParams<...>`); CreateParams sets the
    // declared defaults in it.
    std::unique_ptr<TransformParams> (*create)() = nullptr;
    // The size of what it makes from an input (null keeps the input's size).
    void (*outputSize)(const Image* source, const TransformParams& params, int32_t& width,
                       int32_t& height) = nullptr;
    TransformWorker worker = nullptr;
    const char* help = "";     // what it does, a sentence for the reference
    const char* example = "";  // options for the reference's example: "--color-space hsl"
};

// Registers a module; a static `TransformRegistration` in the module's file
// does it before main.
void RegisterTransform(const TransformModule& module);
struct TransformRegistration {
    explicit TransformRegistration(const TransformModule& module) { RegisterTransform(module); }
};

// Every module, sorted by name.
const std::vector<TransformModule>& Transforms();
const TransformModule* FindTransform(const std::string& name);
const TransformModule* FindTransformByCommand(int32_t commandId);

// ---- The kit: parameters from their declarations ------------------------------------

// A record of the module with every parameter at its declared default; null
// when memory is short.
std::unique_ptr<TransformParams> CreateParams(const TransformModule& module);

// The parameter of that option name, or null.
const ParamDecl* FindParam(const TransformModule& module, const std::string& name);

// Returned by ParamSetText for a value the parameter does not allow.
inline constexpr int32_t kParamRefused = -1;

// Sets a parameter from the command line's text. 0; kParamRefused with
// `problem` saying what was wrong and what is allowed ("'lab' is not one of
// hsv, hsl"); or, for a file that cannot be read, the file's own code (the
// reason is in ErrorDetail()).
int32_t ParamSetText(const ParamDecl& param, TransformParams& params, const std::string& text,
                     std::string& problem);
// The same for any parameter of `module`, a Group among them.
int32_t ParamSetText(const TransformModule& module, const ParamDecl& param,
                     TransformParams& params, const std::string& text, std::string& problem);

// The value of an Int, Choice or Flag parameter, and of a Real one.
int32_t ParamInt(const ParamDecl& param, const TransformParams& params);
double ParamReal(const ParamDecl& param, const TransformParams& params);
// Sets one from a control: false (and nothing set) when out of range or
// unchanged.
bool ParamSetInt(const ParamDecl& param, TransformParams& params, int32_t value);
bool ParamSetReal(const ParamDecl& param, TransformParams& params, double value);

// A Choice's entries: the panel's texts, and the command line's names.
std::vector<std::string> ParamChoiceLabels(const ParamDecl& param);
std::vector<std::string> ParamChoiceNames(const ParamDecl& param);

// What the parameter allows, as the command line says it: "an integer from
// 0 to 2", "one of hsv, hsl", "a number from 0.10 to 10.00", "a \"Curve 1.0\"
// file (.crv)", "no value".
std::string ParamAllowed(const ParamDecl& param);
// Its default as the command line would write it: "2", "hsv", "none"; a
// Group's, its members' joined by commas, needs their module.
std::string ParamDefaultText(const ParamDecl& param, const TransformModule* module = nullptr);

// Whether a module's declarations hold together (a field for each
// parameter of the right kind, defaults inside their ranges, labels for every
// choice, unique lower-case names); "" when they do, else the first fault.
std::string CheckModule(const TransformModule& module);

// The reference of every module, as `lumivue-cli list` prints it (plain) and
// as docs/transformations.md holds it (markdown).
std::string TransformReference(bool markdown);
// One module's part of it.
std::string ModuleReference(const TransformModule& module, bool markdown);
// The module's page of the editor's help, in HTML: what it does, each of its
// settings with what it allows and its default, the same from the command
// line with an example, and `picture` (a file name beside the help pages,
// or "" for none) as its screenshot.
std::string ModuleHelpPage(const TransformModule& module, const std::string& picture);

// The output size for an input.
void TransformOutputSize(const TransformModule& module, const Image* source,
                         const TransformParams& params, int32_t& width, int32_t& height);

// Runs a module's worker for the whole result, as Apply does, into `result`.
// Result 0 or an error code.
int32_t RunTransformToImage(const TransformModule& module, TransformParams& params,
                            const Image* source, Image& result);

// A worker's busy sign and loop: the progress box for 10000 pixels or more,
// else the wait cursor; Close undoes whichever was shown.
struct WorkerBusy {
    bool boxed = false;
    void Open(const TransformArgs& args, const char* title);
    int32_t Step(int32_t line) const;
    void Close() const;
};

}  // namespace lv
