#include "transform/registry.h"

#include <algorithm>

#include "image/progress.h"
#include "shell/errors.h"
#include "shell/frontend.h"

namespace lv {

namespace {

std::vector<TransformModule>& Registry()
{
    static std::vector<TransformModule> modules;
    return modules;
}

}  // namespace

void RegisterTransform(const TransformModule& module)
{
    std::vector<TransformModule>& modules = Registry();
    const auto at = std::lower_bound(modules.begin(), modules.end(), module,
                                     [](const TransformModule& a, const TransformModule& b) {
                                         return std::string(a.name) < b.name;
                                     });
    modules.insert(at, module);
}

const std::vector<TransformModule>& Transforms() { return Registry(); }

const TransformModule* FindTransform(const std::string& name)
{
    for (const TransformModule& m : Registry())
        if (name == m.name) return &m;
    return nullptr;
}

const TransformModule* FindTransformByCommand(int32_t commandId)
{
    for (const TransformModule& m : Registry())
        if (m.commandId == commandId) return &m;
    return nullptr;
}

void TransformOutputSize(const TransformModule& module, const Image* source,
                         const TransformParams& params, int32_t& width, int32_t& height)
{
    width = source ? source->width : 0;
    height = source ? source->height : 0;
    if (module.outputSize) module.outputSize(source, params, width, height);
}

int32_t RunTransformToImage(const TransformModule& module, TransformParams& params,
                            const Image* source, Image& result)
{
    TransformArgs args;
    args.source = source;
    args.destination = &result;
    args.params = &params;
    args.toImage = true;
    TransformOutputSize(module, source, params, args.outWidth, args.outHeight);
    args.rectRight = args.outWidth - 1;
    args.rectBottom = args.outHeight - 1;
    args.width = args.outWidth;
    args.height = args.outHeight;
    return module.worker(args);
}

void WorkerBusy::Open(const TransformArgs& args, const char* title)
{
    boxed = static_cast<int64_t>(args.width) * args.height >= 10000;
    if (boxed)
        ProgressOpen(0, args.height - 1, title, true);
    else
        SetWaitCursor();
}

int32_t WorkerBusy::Step(int32_t line) const { return boxed ? ProgressStep(line) : kOk; }

void WorkerBusy::Close() const
{
    if (boxed)
        ProgressClose();
    else
        SetArrowCursor();
}

}  // namespace lv
