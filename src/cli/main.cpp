// lumivue-cli: the editor's engine without the editor, for scripts and batch
// work. Errors are printed with the program's own message, the file they are
// about and the reason, and the exit status is the error's code; a command
// line that cannot be understood exits with 100 before any file is touched.
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "cli/batch.h"
#include "cli/options.h"
#include "files/formats.h"
#include "files/library.h"
#include "files/metadata.h"
#include "image/image.h"
#include "image/pixel.h"
#include "shell/errors.h"
#include "shell/stderr_frontend.h"
#include "shell/tables.h"
#include "shell/text.h"
#include "shell/version.h"
#include "tone/histogram.h"
#include "transform/registry.h"

namespace lv::cli {
namespace {

const char kHelp[] =
    "Usage: lumivue-cli COMMAND [OPTIONS] [FILES]\n"
    "\n"
    "Runs Lumivue's engine without the editor. Progress goes to stderr as a bar.\n"
    "An error is printed with the program's message, the file it is about and the\n"
    "reason (\"lumivue-cli: out.tif: Problem writing TIFF file (No such file or\n"
    "directory)\"), and the exit status is the error's code: 0 success, 1 out of\n"
    "memory, 11 aborted, 14 wrong image type, 16 a bad curve file, 22 a bad JPEG\n"
    "file, 55 a colour picture for GIF, 56 a bad TIFF file, 57 a TIFF that cannot\n"
    "be written, 71 an unknown file type, ... A command line that cannot be\n"
    "understood (an unknown option, a value out of range) exits with 100 before\n"
    "any file is written.\n"
    "\n"
    "Files are read as TIFF, JPEG, BMP, Targa, PCX, GIF or PNG (JPEG by its\n"
    "contents whatever its name) and written as TIFF, JPEG, BMP, Targa, PCX, GIF,\n"
    "EPS or PNG, chosen by the output's extension. An existing output is\n"
    "replaced only once the new file is complete.\n"
    "\n"
    "Commands:\n"
    "  info FILE...            The kind, size, resolution and type of each file.\n"
    "                            lumivue-cli info photo.jpg scan.tif\n"
    "  convert IN OUT          Reads IN and writes OUT in the format of OUT's\n"
    "                          extension.\n"
    "                            lumivue-cli convert photo.tif photo.jpg --quality 90\n"
    "  convert IN... DIR       Several inputs and an output folder: a batch. Each\n"
    "                          output keeps its input's name, with --format's\n"
    "                          extension.\n"
    "                            lumivue-cli convert *.bmp out/ --format png\n"
    "  negative IN OUT         The negative of IN, written to OUT (or, with\n"
    "  negative IN... DIR      several inputs, into DIR).\n"
    "                            lumivue-cli negative scan.tif scan-negative.tif\n"
    "  apply NAME [--PARAM V]... [--amount P] [--mask FILE --amount2 P] IN OUT\n"
    "  apply NAME ... IN... DIR\n"
    "                          Runs a transformation (see list) as Apply does.\n"
    "                          --amount is the strength in percent (default 100);\n"
    "                          with --mask, a gray picture of the input's size,\n"
    "                          --amount is the strength where the mask is black\n"
    "                          and --amount2 where it is white (default 0 and 100).\n"
    "                          apply NAME --help lists NAME's options.\n"
    "                            lumivue-cli apply negative --amount 50 in.tif out.tif\n"
    "                            lumivue-cli apply equalize --color-space hsl in.jpg out.jpg\n"
    "                            lumivue-cli apply mirror-rotate --orientation cw in.jpg out.jpg\n"
    "                            lumivue-cli apply crop --box 10,20,409,319 in.jpg out.jpg\n"
    "  list                    The transformations and their parameters;\n"
    "                          --markdown writes the reference of\n"
    "                          docs/transformations.md.\n"
    "                            lumivue-cli list\n"
    "  histogram FILE          The histogram of a picture, sampled as the editor\n"
    "                          does (at most 500000 pixels): the peak, then one\n"
    "                          line \"level count\" for each of the 256 levels.\n"
    "                          --channel C chooses what is counted: gray for\n"
    "                          binary and gray pictures; for colour ones\n"
    "                          luminance (the default), red, green, blue, average,\n"
    "                          hsv-hue, hsv-saturation, value, hsl-hue,\n"
    "                          hsl-saturation or lightness.\n"
    "                            lumivue-cli histogram photo.jpg --channel red\n"
    "  --help, help            This text.\n"
    "  --version, version      The version and the libraries behind the formats.\n"
    "\n"
    "Options of convert, negative and apply:\n"
    "  --quality N             JPEG quality 0 to 100 (default 97).\n"
    "  --sampling S            JPEG colour sampling: 444 (default), 422 or 411.\n"
    "  --format EXT            The output format of a batch: tif, jpg, bmp, tga,\n"
    "                          pcx, gif, eps or png (default: the input's own).\n"
    "  --jobs N                Files of a batch done side by side (default: the\n"
    "                          machine's cores); the outputs are the same.\n"
    "  --compression C         How TIFF files are packed: none (default), lzw or\n"
    "                          deflate, both lossless.\n"
    "  --no-orient             Leave pictures as stored; by default a JPEG or\n"
    "                          TIFF is turned as its EXIF orientation says the\n"
    "                          camera was held (info takes it too).\n"
    "\n"
    "A picture's EXIF, XMP and IPTC and its ICC profile go with it into the JPEG,\n"
    "TIFF and PNG files written from it, with the orientation set to normal.\n"
    "info prints the camera, the date taken, the exposure and the profile.\n";

const char* const kFormats[] = {"tif", "tiff", "jpg", "jpeg", "bmp",
                                "tga", "pcx",  "gif", "eps",  "png"};

std::vector<Option> SaveOptionList()
{
    return {{"quality", true, "an integer from 0 to 100"},
            {"sampling", true, "one of 444, 422, 411"},
            {"format", true, "one of tif, tiff, jpg, jpeg, bmp, tga, pcx, gif, eps, png"},
            {"jobs", true, "an integer from 1 to 64"},
            {"compression", true, "one of none, lzw, deflate"},
            {"no-orient", false, "no value"}};
}

// The save options and the batch's format from a parsed line. False with
// `problem` for a value that is not allowed.
bool ReadSaveOptions(const CommandLine& line, SaveOptions& save, std::string& format, int32_t& jobs,
                     std::string& problem)
{
    jobs = DefaultJobs();
    // Pictures stand as the camera was held unless asked otherwise.
    SetOrientOnOpen(OptionValue(line, "no-orient") == nullptr);
    if (const std::string* j = OptionValue(line, "jobs")) {
        if (ParseInt(*j, jobs) != 0 || jobs < 1 || jobs > 64) {
            problem = "--jobs: '" + *j + "' is not allowed; allowed: an integer from 1 to 64";
            return false;
        }
    }
    if (const std::string* q = OptionValue(line, "quality")) {
        int32_t quality = 0;
        if (ParseInt(*q, quality) != 0 || quality < 0 || quality > 100) {
            problem = "--quality: '" + *q + "' is not allowed; allowed: an integer from 0 to 100";
            return false;
        }
        save.jpegQuality = quality;
    }
    if (const std::string* s = OptionValue(line, "sampling")) {
        if (*s == "444" || *s == "4:4:4")
            save.jpegSampling = 0;
        else if (*s == "422" || *s == "4:2:2")
            save.jpegSampling = 1;
        else if (*s == "411" || *s == "4:1:1")
            save.jpegSampling = 2;
        else {
            problem = "--sampling: '" + *s + "' is not allowed; allowed: one of 444, 422, 411";
            return false;
        }
    }
    if (const std::string* c = OptionValue(line, "compression")) {
        const char* const names[] = {"none", "lzw", "deflate"};
        int32_t found = -1;
        for (int32_t i = 0; i < 3; ++i)
            if (*c == names[i]) found = i;
        if (found < 0) {
            problem =
                "--compression: '" + *c + "' is not allowed; allowed: one of none, lzw, deflate";
            return false;
        }
        save.tiffCompression = found;
    }
    if (const std::string* f = OptionValue(line, "format")) {
        format = *f;
        if (!format.empty() && format[0] == '.') format.erase(0, 1);
        bool known = false;
        for (const char* name : kFormats) known = known || format == name;
        if (!known) {
            problem = "--format: '" + *f +
                      "' is not allowed; allowed: one of tif, tiff, jpg, jpeg, bmp, tga, pcx, gif, "
                      "eps, png";
            return false;
        }
    }
    return true;
}

// A picture's kind in a sentence: "binary", "gray", "color".
const char* KindWord(int32_t kind)
{
    switch (kind) {
    case kImageBinary: return "binary";
    case kImageGray: return "gray";
    case kImageColor: return "color";
    default: return "unusual";
    }
}

// ---- info -------------------------------------------------------------------------------

// The type of a file as the Open dialog's filters name it.
const char* TypeName(int32_t type)
{
    const FileTypeInfo* info = FindFileType(type);
    return info && type != kTypeAll ? info->filterName : "unknown";
}

int Info(const std::vector<std::string>& args)
{
    CommandLine line;
    std::string problem;
    if (!ParseCommandLine(args, {{"no-orient", false, "no value"}}, "info", line, problem))
        return UsageError(problem);
    SetOrientOnOpen(OptionValue(line, "no-orient") == nullptr);
    if (line.operands.empty()) return UsageError("info needs at least one file");
    int first = 0;
    for (const std::string& path : line.operands) {
        ClearErrorDetail();
        // The header alone: what it says of the picture, no pixels decoded.
        const int32_t type = FileTypeFromName(path);
        PictureInfo info;
        const int32_t code = type < 0 ? kErrUnknownFileType : ReadImageInfo(path, type, info);
        if (code) {
            PrintFailure({code, path, {}});
            if (!first) first = code;
            continue;
        }
        // The size as the picture opens: turned by its orientation.
        PictureMetadata metadata;
        MetadataRead(path, metadata);
        const bool turned = OrientOnOpen() && metadata.orientation >= 5;
        std::printf("%s\n",
                    FormatText("%s: %s, %d x %d pixels, %2f dpi, %s", path,
                               ImageKindName(info.kind), turned ? info.height : info.width,
                               turned ? info.width : info.height, info.resolution, TypeName(type))
                        .c_str());
        auto line = [](const char* what, const std::string& text) {
            if (!text.empty()) std::printf("  %s: %s\n", what, text.c_str());
        };
        line("camera", metadata.camera);
        line("taken", metadata.taken);
        line("exposure", metadata.exposure);
        if (metadata.orientation != 1)
            line("orientation",
                 FormatText("%d, %s", metadata.orientation,
                            OrientOnOpen() ? "turned on opening" : "left as stored (--no-orient)"));
        line("profile", metadata.profileName);
    }
    return first;
}

// ---- convert and negative ---------------------------------------------------------------

int Convert(const std::vector<std::string>& args, bool negative)
{
    const char* command = negative ? "negative" : "convert";
    CommandLine line;
    std::string problem, format;
    SaveOptions save;
    int32_t parallel = 1;
    if (!ParseCommandLine(args, SaveOptionList(), command, line, problem) ||
        !ReadSaveOptions(line, save, format, parallel, problem))
        return UsageError(problem);
    std::vector<Job> jobs;
    bool batch = false;
    if (!PlanJobs(line.operands, format, jobs, batch, problem))
        return UsageError(std::string(command) + ": " + problem);
    if (Failure failure = CheckOutputs(jobs); failure.code) {
        PrintFailure(failure);
        return failure.code;
    }
    return RunJobs(jobs, batch, parallel, [&](const Job& job) -> Failure {
        Image image;
        PictureMetadata metadata;
        if (Failure failure = ReadPicture(job.input, image, true, &metadata); failure.code)
            return failure;
        if (negative) {
            Image result;
            if (int32_t code = ImageNegative(image, result)) return {code, job.input, {}};
            image = std::move(result);
        }
        SaveOptions options = save;
        options.metadata = &metadata;
        if (int32_t code =
                WriteImageFile(job.output, SaveFilterFromName(job.output), image, options))
            return {code, job.output, {}};
        return {};
    });
}

// ---- apply ------------------------------------------------------------------------------

int Apply(const std::vector<std::string>& args)
{
    if (args.empty() || args[0].rfind("-", 0) == 0)
        return UsageError("apply needs a transformation's name first; see lumivue-cli list");
    const TransformModule* module = FindTransform(args[0]);
    if (!module) {
        std::string names;
        for (const TransformModule& m : Transforms())
            names += (names.empty() ? "" : ", ") + std::string(m.name);
        return UsageError("apply: no transformation '" + args[0] + "'; there are: " + names);
    }
    const std::string command = "apply " + std::string(module->name);
    for (size_t i = 1; i < args.size(); ++i) {
        if (args[i] == "--help") {
            // What its options are and allow, with an example.
            std::string text = ModuleReference(*module, false);
            text += std::string("  for example: lumivue-cli apply ") + module->name +
                    (*module->example ? std::string(" ") + module->example : "") +
                    " in.jpg out.jpg\n";
            std::fputs(text.c_str(), stdout);
            return 0;
        }
    }
    std::vector<Option> allowed;
    for (const ParamDecl& p : module->params)
        allowed.push_back({p.name, p.type != ParamType::Flag, ParamAllowed(p)});
    if (module->hasAmount) {
        allowed.push_back({"amount", true, "a percentage from 0 to 100"});
        allowed.push_back({"mask", true, "a gray picture of the input's size"});
        allowed.push_back({"amount2", true, "a percentage from 0 to 100"});
    }
    for (Option& o : SaveOptionList()) allowed.push_back(o);

    if (!module->hasAmount) {
        // Said plainly rather than as an unknown option.
        for (size_t i = 1; i < args.size(); ++i) {
            for (const char* name : {"--amount", "--amount2", "--mask"}) {
                if (args[i] == name || args[i].rfind(std::string(name) + "=", 0) == 0)
                    return UsageError(std::string(name) + ": " + module->name +
                                      " has no Amount control, so no Amount and no mask");
            }
        }
    }
    CommandLine line;
    std::string problem, format;
    SaveOptions save;
    int32_t parallel = 1;
    if (!ParseCommandLine(std::vector<std::string>(args.begin() + 1, args.end()), allowed, command,
                          line, problem) ||
        !ReadSaveOptions(line, save, format, parallel, problem))
        return UsageError(problem);
    double amount = 100, amount2 = 100;
    const std::string* amountText = OptionValue(line, "amount");
    const std::string* amount2Text = OptionValue(line, "amount2");
    const std::string* maskPath = OptionValue(line, "mask");
    if (amountText && !ParsePercent(*amountText, amount))
        return UsageError("--amount: '" + *amountText +
                          "' is not allowed; allowed: a percentage from 0 to 100");
    if (amount2Text && !ParsePercent(*amount2Text, amount2))
        return UsageError("--amount2: '" + *amount2Text +
                          "' is not allowed; allowed: a percentage from 0 to 100");
    if (amount2Text && !maskPath)
        return UsageError("--amount2 is the strength where a mask is white; it needs --mask");
    if (maskPath && !amountText) amount = 0;

    std::vector<Job> jobs;
    bool batch = false;
    if (!PlanJobs(line.operands, format, jobs, batch, problem))
        return UsageError(command + ": " + problem);

    // The parameters, a parameter file among them: its failure names it.
    std::unique_ptr<TransformParams> params = CreateParams(*module);
    if (!params) {
        PrintFailure({kErrOutOfMemory, module->name, {}});
        return kErrOutOfMemory;
    }
    for (const GivenOption& given : line.options) {
        const ParamDecl* param = FindParam(*module, given.name);
        if (!param) continue;
        ClearErrorDetail();
        const int32_t code = ParamSetText(*module, *param, *params, given.value, problem);
        if (code == kParamRefused) return UsageError("--" + given.name + ": " + problem);
        if (code) {
            PrintFailure({code, given.value, {}});
            return code;
        }
    }
    if (Failure failure = CheckOutputs(jobs); failure.code) {
        PrintFailure(failure);
        return failure.code;
    }
    Image mask;
    if (maskPath) {
        ClearErrorDetail();
        if (Failure failure = ReadPicture(*maskPath, mask, false); failure.code) {
            PrintFailure(failure);
            return failure.code;
        }
    }
    auto level = [](double percent) { return RoundToInt(percent * 1024 / 100); };
    return RunJobs(jobs, batch, parallel, [&](const Job& job) -> Failure {
        Image source;
        PictureMetadata metadata;
        if (Failure failure = ReadPicture(job.input, source, true, &metadata); failure.code)
            return failure;
        AmountBlock& block = params->amount;
        if (maskPath) {
            // A mask is a gray picture of the input's size.
            if (mask.kind != kImageGray || mask.width != source.width ||
                mask.height != source.height) {
                return {kUsageStatus, *maskPath,
                        FormatText("--mask must be a gray picture of the input's size, %d x %d; "
                                   "this is a %s picture of %d x %d",
                                   source.width, source.height, KindWord(mask.kind), mask.width,
                                   mask.height)};
            }
            AmountSetMask(block, &mask, nullptr);
            block.amount = level(amount);
            block.amount2 = level(amount2);
        } else {
            block.amount = level(amount);
        }
        Image result;
        if (int32_t code = RunTransformToImage(*module, *params, &source, result))
            return {code, job.input, {}};
        SaveOptions options = save;
        options.metadata = &metadata;  // the same photograph's
        if (int32_t code =
                WriteImageFile(job.output, SaveFilterFromName(job.output), result, options))
            return {code, job.output, {}};
        return {};
    });
}

// ---- list -------------------------------------------------------------------------------

int List(const std::vector<std::string>& args)
{
    CommandLine line;
    std::string problem;
    if (!ParseCommandLine(args, {{"markdown", false, "no value"}}, "list", line, problem))
        return UsageError(problem);
    if (!line.operands.empty()) return UsageError("list takes no files; allowed: --markdown");
    std::fputs(TransformReference(OptionValue(line, "markdown") != nullptr).c_str(), stdout);
    return 0;
}

// ---- histogram --------------------------------------------------------------------------

const char* const kChannelNames[] = {"gray",    "red",       "green",          "blue",
                                     "average", "luminance", "hsv-hue",        "hsv-saturation",
                                     "value",   "hsl-hue",   "hsl-saturation", "lightness"};
const char kChannels[] =
    "one of gray, red, green, blue, average, luminance, hsv-hue, hsv-saturation, value, "
    "hsl-hue, hsl-saturation, lightness";

// The record of a channel of a colour picture; false for a channel that is
// not one.
bool ColourChannel(const Image& image, const std::string& channel, HistogramRecord& h)
{
    HistogramRecord a, b, c;
    if (channel == "luminance") {
        histogram_luminance(image, h, kHistogramBudget);
    } else if (channel == "average") {
        histogram_average(image, h, kHistogramBudget);
    } else if (channel == "red" || channel == "green" || channel == "blue") {
        histogram_rgb(image, a, b, c, kHistogramBudget);
        h = channel == "red" ? a : channel == "green" ? b : c;
    } else if (channel == "hsv-hue") {
        histogram_hsv(image, h, b, c, kHistogramBudget);
    } else if (channel == "hsl-hue") {
        histogram_hsl(image, h, b, c, kHistogramBudget);
    } else if (channel == "hsv-saturation") {
        histogram_hsv_saturation(image, h, kHistogramBudget);
    } else if (channel == "hsl-saturation") {
        histogram_hsl_saturation(image, h, kHistogramBudget);
    } else if (channel == "value") {
        histogram_value(image, h, kHistogramBudget);
    } else if (channel == "lightness") {
        histogram_lightness(image, h, kHistogramBudget);
    } else {
        return false;
    }
    return true;
}

int Histogram(const std::vector<std::string>& args)
{
    CommandLine line;
    std::string problem;
    if (!ParseCommandLine(args, {{"channel", true, kChannels}}, "histogram", line, problem))
        return UsageError(problem);
    if (line.operands.size() != 1) return UsageError("histogram needs one file");
    const std::string* given = OptionValue(line, "channel");
    const std::string channel = given ? *given : "";
    bool known = !given;
    for (const char* name : kChannelNames) known = known || channel == name;
    if (!known)
        return UsageError("--channel: '" + channel + "' is not allowed; allowed: " + kChannels);
    const std::string& path = line.operands[0];
    Image image;
    if (Failure failure = ReadPicture(path, image, false); failure.code) {
        PrintFailure(failure);
        return failure.code;
    }
    HistogramRecord h;
    const bool colour = image.kind == kImageColor;
    if (!colour && !channel.empty() && channel != "gray") {
        PrintFailure(
            {kErrImageType, path,
             std::string("a ") + KindWord(image.kind) + " picture has only the channel gray"});
        return kErrImageType;
    }
    if (colour && channel == "gray") {
        PrintFailure({kErrImageType, path,
                      "a color picture has no channel gray; luminance is its brightness"});
        return kErrImageType;
    }
    if (image.kind == kImageBinary)
        histogram_binary(image, h, kHistogramBudget);
    else if (image.kind == kImageGray)
        histogram_gray(image, h, kHistogramBudget);
    else
        ColourChannel(image, channel.empty() ? "luminance" : channel, h);
    std::printf("peak %d\n", h.peak);
    for (int32_t i = 0; i < 256; ++i) std::printf("%d %d\n", i, h.counts[i]);
    return 0;
}

void OnSignal(int) { StderrFrontEnd::RequestCancel(); }

int Main(int argc, char** argv)
{
    InitEngineTables();
    // An interruption is Cancel: the job stops at a row, its temporary file
    // goes, the old file stays, and the command exits 11. A second one
    // ends the program at once.
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    action.sa_flags = SA_RESETHAND | SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
    // Bars only on a terminal, or when LUMIVUE_PROGRESS=1 asks for them.
    const char* forced = std::getenv("LUMIVUE_PROGRESS");
    StderrFrontEnd frontEnd(stderr, isatty(fileno(stderr)) || (forced && *forced == '1'));
    ScopedFrontEnd installed(frontEnd);

    if (argc < 2) {
        std::fputs(kHelp, stdout);
        return kUsageStatus;
    }
    const std::string command = argv[1];
    const std::vector<std::string> args(argv + 2, argv + argc);
    if (command == "--help" || command == "help") {
        std::fputs(kHelp, stdout);
        return 0;
    }
    if (command == "--version" || command == "version") {
        std::printf("lumivue-cli %s\n%s\n", kVersionText, LibraryVersions().c_str());
        return 0;
    }
    if (command == "info") return Info(args);
    if (command == "convert") return Convert(args, false);
    if (command == "negative") return Convert(args, true);
    if (command == "apply") return Apply(args);
    if (command == "list") return List(args);
    if (command == "histogram") return Histogram(args);
    return UsageError("unknown command '" + command +
                      "'; commands: info, convert, negative, apply, list, histogram, help, "
                      "version");
}

}  // namespace
}  // namespace lv::cli

int main(int argc, char** argv) { return lv::cli::Main(argc, argv); }
