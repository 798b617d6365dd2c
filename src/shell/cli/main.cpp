// lumivue-cli: the editor's engine without the editor, for scripts and batch
// work. Errors are printed with the program's own message and the exit
// status is the error's code.
#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "files/formats.h"
#include "files/library.h"
#include "image/image.h"
#include "image/pixel.h"
#include "shell/errors.h"
#include "shell/stderr_frontend.h"
#include "shell/tables.h"
#include "shell/text.h"
#include "shell/version.h"
#include "tone/histogram.h"
#include "transform/registry.h"

namespace lv {
namespace {

// Exit status for a command line the tool cannot understand. It lies outside
// the error table so that scripts can tell it from an error of the work.
constexpr int kUsageStatus = 100;

const char kHelp[] =
    "Usage: lumivue-cli COMMAND [OPTIONS] [FILES]\n"
    "\n"
    "Runs Lumivue's engine without the editor. Progress goes to stderr as a bar;\n"
    "errors are printed with the program's message, and the exit status is the\n"
    "error's code (0 success, 1 out of memory, 11 aborted, 14 wrong image type,\n"
    "24 \"Only grayscale or color images can be saved in JPEG format\", ...).\n"
    "A command line that cannot be understood exits with status 100.\n"
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
    "  apply NAME [--PARAM V]... [--amount P] [--amount2 P] [--mask FILE] IN OUT\n"
    "  apply NAME ... IN... DIR\n"
    "                          Runs a transformation (see list) as Apply does.\n"
    "                          --amount is the strength in percent (default 100);\n"
    "                          with --mask, a gray picture of the input's size,\n"
    "                          --amount is the strength where the mask is black\n"
    "                          and --amount2 where it is white (default 0 and 100).\n"
    "                            lumivue-cli apply negative --amount 50 in.tif out.tif\n"
    "  list                    The transformations and their parameters.\n"
    "                            lumivue-cli list\n"
    "  histogram FILE          The histogram of a picture, sampled as the editor\n"
    "                          does (at most 500000 pixels): the peak, then one\n"
    "                          line \"level count\" for each of the 256 levels.\n"
    "                          Colour pictures give luminance; --channel red,\n"
    "                          green, blue or average chooses another.\n"
    "                            lumivue-cli histogram photo.jpg --channel red\n"
    "  --help, help            This text.\n"
    "  --version, version      The version and the libraries behind the formats.\n"
    "\n"
    "Options:\n"
    "  --quality N             JPEG quality 0 to 100 (default 97).\n"
    "  --sampling S            JPEG colour sampling: 444 (default), 422 or 411.\n"
    "  --format EXT            The output format of a batch: tif, jpg, bmp, tga,\n"
    "                          pcx, gif, eps or png (default: the input's own).\n";

struct Options {
    SaveOptions save;
    std::string format;  // the extension of a batch's outputs, without the point
    std::vector<std::string> files;
};

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

void PrintError(const std::string& file, int32_t code)
{
    std::fprintf(stderr, "lumivue-cli: %s: %s\n", file.c_str(), ErrorText(code));
}

// Parses the options among the arguments; false on a bad one.
bool ParseOptions(int argc, char** argv, int first, Options& options)
{
    for (int i = first; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--quality" && hasValue) {
            int32_t q = 0;
            if (ParseInt(argv[++i], q) || q < 0 || q > 100) return false;
            options.save.jpegQuality = q;
        } else if (arg == "--sampling" && hasValue) {
            const std::string s = argv[++i];
            if (s == "444" || s == "4:4:4")
                options.save.jpegSampling = 0;
            else if (s == "422" || s == "4:2:2")
                options.save.jpegSampling = 1;
            else if (s == "411" || s == "4:1:1")
                options.save.jpegSampling = 2;
            else
                return false;
        } else if (arg == "--format" && hasValue) {
            options.format = argv[++i];
            if (!options.format.empty() && options.format[0] == '.') options.format.erase(0, 1);
        } else if (arg.rfind("--", 0) == 0) {
            return false;
        } else {
            options.files.push_back(arg);
        }
    }
    return true;
}

// The type of a file as the Open dialog's filters name it.
const char* TypeName(int32_t type)
{
    const FileTypeInfo* info = FindFileType(type);
    return info && type != kTypeAll ? info->filterName : "unknown";
}

int32_t Info(const std::vector<std::string>& files)
{
    int32_t first = kOk;
    for (const std::string& path : files) {
        const int32_t type = FileTypeFromName(path);
        Image image;
        const int32_t code = ReadImageFile(path, type < 0 ? kTypeTiff : type, image, false);
        if (code) {
            PrintError(path, type < 0 && code != kErrCannotOpen ? kErrUnknownFileType : code);
            if (!first) first = type < 0 && code != kErrCannotOpen ? kErrUnknownFileType : code;
            continue;
        }
        std::printf("%s\n", FormatText("%s: %s, %d x %d pixels, %2f dpi, %s", path,
                                       ImageKindName(image.kind), image.width, image.height,
                                       image.resolution, TypeName(type))
                                .c_str());
    }
    return first;
}

// Reads `in`, makes the negative when asked, and writes `out`.
int32_t ConvertOne(const std::string& in, const std::string& out, bool negative,
                   const Options& options)
{
    const int32_t filter = SaveFilterFromName(out);
    if (!filter) return kErrUnknownFileType;
    const int32_t type = FileTypeFromName(in);
    Image image;
    int32_t code = ReadImageFile(in, type < 0 ? kTypeTiff : type, image, true);
    if (code) return code;
    if (negative) {
        Image result;
        if ((code = ImageNegative(image, result))) return code;
        image = std::move(result);
    }
    return WriteImageFile(out, filter, image, options.save);
}

int32_t Convert(const Options& options, bool negative)
{
    const std::vector<std::string>& files = options.files;
    if (files.size() < 2) return -1;
    const std::string& last = files.back();
    if (files.size() == 2 && !IsDirectory(last)) {
        const int32_t code = ConvertOne(files[0], last, negative, options);
        if (code)
            PrintError(code == kErrUnknownFileType && !SaveFilterFromName(last) ? last : files[0],
                       code);
        return code;
    }
    if (!IsDirectory(last)) return -1;
    int32_t first = kOk;
    for (size_t i = 0; i + 1 < files.size(); ++i) {
        std::string name = BaseName(files[i]);
        if (!options.format.empty()) name = ReplaceExtension(name, options.format);
        const std::string out = JoinPath(last, name);
        const int32_t code = ConvertOne(files[i], out, negative, options);
        if (code) {
            PrintError(files[i], code);
            if (!first) first = code;
        } else {
            std::printf("%s -> %s\n", files[i].c_str(), out.c_str());
        }
    }
    return first;
}

// "apply": the options are the module's own parameters, the Amount and the
// mask; the files are the input (or inputs) and the output (or folder).
struct ApplyOptions {
    std::vector<std::pair<std::string, std::string>> params;
    int32_t amount = -1, amount2 = -1;  // percent; -1 when not given
    std::string mask;
    Options files;
};

int32_t Percent(const std::string& text, int32_t& value)
{
    int32_t p = 0;
    if (ParseInt(text, p) || p < 0 || p > 100) return -1;
    value = p;
    return 0;
}

bool ParseApply(int argc, char** argv, ApplyOptions& options)
{
    for (int i = 3; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg.rfind("--", 0) != 0) {
            options.files.files.push_back(arg);
            continue;
        }
        if (i + 1 >= argc) return false;
        const std::string value = argv[++i];
        if (arg == "--amount") {
            if (Percent(value, options.amount)) return false;
        } else if (arg == "--amount2") {
            if (Percent(value, options.amount2)) return false;
        } else if (arg == "--mask") {
            options.mask = value;
        } else if (arg == "--quality" || arg == "--sampling" || arg == "--format") {
            char* pair[] = {argv[0], argv[1], const_cast<char*>(arg.c_str()),
                            const_cast<char*>(value.c_str())};
            if (!ParseOptions(4, pair, 2, options.files)) return false;
        } else {
            options.params.emplace_back(arg.substr(2), value);
        }
    }
    return true;
}

int32_t ApplyOne(const TransformModule& module, const ApplyOptions& options, const std::string& in,
                 const std::string& out)
{
    const int32_t filter = SaveFilterFromName(out);
    if (!filter) return kErrUnknownFileType;
    std::unique_ptr<TransformParams> params = module.create();
    if (!params) return kErrOutOfMemory;
    for (const auto& [name, value] : options.params)
        if (int32_t code = module.set ? module.set(*params, name, value) : -1) return code;
    const int32_t type = FileTypeFromName(in);
    Image source;
    if (int32_t code = ReadImageFile(in, type < 0 ? kTypeTiff : type, source, true)) return code;
    Image mask;
    AmountBlock& amount = params->amount;
    if (!options.mask.empty()) {
        const int32_t maskType = FileTypeFromName(options.mask);
        if (int32_t code =
                ReadImageFile(options.mask, maskType < 0 ? kTypeTiff : maskType, mask, false))
            return code;
        // A mask is a gray picture of the input's size.
        if (mask.kind != kImageGray || mask.width != source.width || mask.height != source.height)
            return kErrImageType;
        AmountSetMask(amount, &mask, nullptr);
    }
    auto scale = [](int32_t percent) { return RoundToInt(percent * 1024.0 / 100.0); };
    if (options.amount >= 0) amount.amount = scale(options.amount);
    if (options.amount2 >= 0 && amount.mask) amount.amount2 = scale(options.amount2);
    Image result;
    if (int32_t code = RunTransformToImage(module, *params, &source, result)) return code;
    return WriteImageFile(out, filter, result, options.files.save);
}

int32_t Apply(const TransformModule& module, const ApplyOptions& options)
{
    const std::vector<std::string>& files = options.files.files;
    if (files.size() < 2) return -1;
    const std::string& last = files.back();
    if (files.size() == 2 && !IsDirectory(last)) {
        const int32_t code = ApplyOne(module, options, files[0], last);
        if (code) PrintError(files[0], code);
        return code;
    }
    if (!IsDirectory(last)) return -1;
    int32_t first = kOk;
    for (size_t i = 0; i + 1 < files.size(); ++i) {
        std::string name = BaseName(files[i]);
        if (!options.files.format.empty()) name = ReplaceExtension(name, options.files.format);
        const std::string out = JoinPath(last, name);
        const int32_t code = ApplyOne(module, options, files[i], out);
        if (code) {
            PrintError(files[i], code);
            if (!first) first = code;
        } else {
            std::printf("%s -> %s\n", files[i].c_str(), out.c_str());
        }
    }
    return first;
}

void List()
{
    for (const TransformModule& m : Transforms()) {
        std::printf("%s  (%s)\n", m.name, m.title);
        for (const ParamSpec& p : m.params) {
            std::string kind;
            switch (p.type) {
            case ParamType::Int:
                kind = FormatText("integer %d to %d", static_cast<int32_t>(p.minimum),
                                  static_cast<int32_t>(p.maximum));
                break;
            case ParamType::Real: kind = FormatText("number %f to %f", p.minimum, p.maximum); break;
            case ParamType::Choice: kind = std::string("one of ") + p.choices; break;
            case ParamType::File: kind = std::string("a \"") + p.fileKind + " 1.0\" file"; break;
            }
            std::printf("    --%s  %s, default %s. %s\n", p.name, kind.c_str(),
                        *p.defaultValue ? p.defaultValue : "none", p.help);
        }
        if (m.hasAmount) std::printf("    --amount, --amount2, --mask  the Amount and its mask\n");
    }
}

int32_t Histogram(int argc, char** argv)
{
    std::string channel = "luminance";
    std::string path;
    for (int i = 2; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--channel" && i + 1 < argc)
            channel = argv[++i];
        else if (arg.rfind("--", 0) == 0 || !path.empty())
            return -1;
        else
            path = arg;
    }
    if (path.empty()) return -1;
    const int32_t type = FileTypeFromName(path);
    Image image;
    if (int32_t code = ReadImageFile(path, type < 0 ? kTypeTiff : type, image, false)) {
        PrintError(path, code);
        return code;
    }
    HistogramRecord h, g, b;
    switch (image.kind) {
    case kImageBinary: histogram_binary(image, h, kHistogramBudget); break;
    case kImageGray: histogram_gray(image, h, kHistogramBudget); break;
    default:
        if (channel == "luminance") {
            histogram_luminance(image, h, kHistogramBudget);
        } else if (channel == "average") {
            histogram_average(image, h, kHistogramBudget);
        } else if (channel == "red" || channel == "green" || channel == "blue") {
            HistogramRecord r;
            histogram_rgb(image, r, g, b, kHistogramBudget);
            h = channel == "red" ? r : channel == "green" ? g : b;
        } else {
            return -1;
        }
    }
    std::printf("peak %d\n", h.peak);
    for (int32_t i = 0; i < 256; ++i) std::printf("%d %d\n", i, h.counts[i]);
    return kOk;
}

int Usage(const char* problem)
{
    std::fprintf(stderr, "lumivue-cli: %s; see lumivue-cli --help\n", problem);
    return kUsageStatus;
}

int Main(int argc, char** argv)
{
    InitEngineTables();
    StderrFrontEnd frontEnd;
    ScopedFrontEnd installed(frontEnd);

    if (argc < 2) {
        std::fputs(kHelp, stdout);
        return kUsageStatus;
    }
    const std::string command = argv[1];
    if (command == "--help" || command == "help" || command == "-h") {
        std::fputs(kHelp, stdout);
        return 0;
    }
    if (command == "--version" || command == "version") {
        std::printf("lumivue-cli %s\n%s\n", kVersionText, LibraryVersions().c_str());
        return 0;
    }
    if (command == "list") {
        List();
        return 0;
    }
    if (command == "histogram") {
        const int32_t code = Histogram(argc, argv);
        if (code < 0) return Usage("histogram needs one file and at most a --channel");
        return code;
    }
    if (command == "apply") {
        if (argc < 3) return Usage("apply needs a transformation's name");
        const TransformModule* module = FindTransform(argv[2]);
        if (!module) return Usage("no such transformation; see lumivue-cli list");
        ApplyOptions apply;
        if (!ParseApply(argc, argv, apply)) return Usage("bad option");
        const int32_t code = Apply(*module, apply);
        if (code < 0) return Usage("give an input and an output, or inputs and a folder");
        return code;
    }
    Options options;
    if (!ParseOptions(argc, argv, 2, options)) return Usage("bad option");
    if (command == "info") {
        if (options.files.empty()) return Usage("info needs at least one file");
        return Info(options.files);
    }
    if (command == "convert" || command == "negative") {
        const int32_t code = Convert(options, command == "negative");
        if (code < 0) return Usage("give an input and an output, or inputs and a folder");
        return code;
    }
    return Usage(("unknown command '" + command + "'").c_str());
}

}  // namespace
}  // namespace lv

int main(int argc, char** argv) { return lv::Main(argc, argv); }
