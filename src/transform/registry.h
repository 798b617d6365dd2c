// The registry of transformations. Each module registers itself from its own
// file: its name for the command line, its title, its parameters (name, type,
// range, default, and the parameter file it can load), the size of what it
// makes, and its worker. The editor's panels, lumivue-cli's "apply" and
// "list", and the documentation all come from these descriptions.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "image/image.h"
#include "image/window.h"
#include "transform/amount.h"

namespace lv {

enum class ParamType { Int, Real, Choice, File };

struct ParamSpec {
    const char* name;  // "color-space"
    ParamType type;
    double minimum = 0;
    double maximum = 0;
    const char* defaultValue = "";
    const char* choices = "";   // Choice: "rgb|hsv|hsl"
    const char* fileKind = "";  // File: the parameter file's name, "Curve" for ".crv"
    const char* help = "";
    const char* label = "";         // the panel's label, "Color Space:"; the name when empty
    const char* choiceLabels = "";  // Choice: what the panel shows, "HSV V|HSL L"
    bool inPanel = true;  // false: the command line's alone; the panel sets it its own way
};

// A module's parameter record; its head is the Amount block of its Amount
// control. Modules derive their own.
struct TransformParams {
    AmountBlock amount;
    virtual ~TransformParams() = default;
};

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

struct TransformModule {
    const char* name;   // for the command line: "negative"
    const char* title;  // "Negative": the panel's title and the progress box's
    int32_t commandId = 0;
    int32_t panelKind = 0;
    bool hasAmount = true;
    std::vector<ParamSpec> params;
    // A record with the defaults.
    std::unique_ptr<TransformParams> (*create)() = nullptr;
    // Sets one parameter from its text; 0, or the parameter's error code.
    int32_t (*set)(TransformParams& params, const std::string& name,
                   const std::string& value) = nullptr;
    // The size of what it makes from an input (null keeps the input's size).
    void (*outputSize)(const Image* source, const TransformParams& params, int32_t& width,
                       int32_t& height) = nullptr;
    TransformWorker worker = nullptr;
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
