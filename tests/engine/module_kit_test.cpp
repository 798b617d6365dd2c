// The module kit: declarations turned into defaults, parsing and messages;
// every registered module's declarations; and the recipe's example module,
// which the build compiles out of docs/architecture.md.
#include <gtest/gtest.h>

#include <string>

#include "image/image.h"
#include "shell/commands.h"
#include "shell/errors.h"
#include "synthesis/test_card.h"
#include "transform/registry.h"

namespace lv {
namespace {

struct KitParams : TransformParams {
    int32_t radius;
    double gamma;
    int32_t mode;
    int32_t complement;
    int32_t loaded = 0;
};

int32_t LoadAnything(TransformParams& p, const std::string& path)
{
    if (path == "missing.crv") return kErrCannotOpen;
    static_cast<KitParams&>(p).loaded = 1;
    return kOk;
}

int32_t NoWork(const TransformArgs&) { return kOk; }

const TransformModule kKit{
    .name = "kit",
    .title = "Kit",
    .params = {{.name = "radius",
                .type = ParamType::Int,
                .field = Field(&KitParams::radius),
                .minimum = 1,
                .maximum = 50,
                .defaultValue = 3,
                .help = "a radius"},
               {.name = "gamma",
                .type = ParamType::Real,
                .field = Field(&KitParams::gamma),
                .minimum = 0.1,
                .maximum = 10,
                .defaultValue = 2.2,
                .decimals = 2,
                .help = "a gamma"},
               {.name = "mode",
                .type = ParamType::Choice,
                .field = Field(&KitParams::mode),
                .defaultValue = 1,
                .choiceLabels = "Compute|Darken Only|Lighten",
                .help = "a mode"},
               {.name = "complement",
                .type = ParamType::Flag,
                .field = Field(&KitParams::complement),
                .help = "a switch"},
               {.name = "curve",
                .type = ParamType::File,
                .field = Loader(LoadAnything),
                .fileKind = "Curve",
                .fileExtension = ".crv",
                .help = "a file",
                .inPanel = false}},
    .create = NewParams<KitParams>,
    .worker = NoWork,
};

TEST(ModuleKit, DefaultsComeFromTheDeclarationsAlone)
{
    auto params = CreateParams(kKit);
    ASSERT_NE(params, nullptr);
    const auto& p = static_cast<const KitParams&>(*params);
    EXPECT_EQ(p.radius, 3);
    EXPECT_EQ(p.gamma, 2.2);
    EXPECT_EQ(p.mode, 1);
    EXPECT_EQ(p.complement, 0);
    EXPECT_EQ(p.loaded, 0);
    EXPECT_EQ(p.amount.amount, 1024);
    EXPECT_EQ(CheckModule(kKit), "");
}

TEST(ModuleKit, TextIsParsedRangeCheckedAndRefusedWithWhatIsAllowed)
{
    auto params = CreateParams(kKit);
    auto& p = static_cast<KitParams&>(*params);
    std::string problem;
    auto set = [&](const char* name, const char* text) {
        return ParamSetText(*FindParam(kKit, name), *params, text, problem);
    };
    EXPECT_EQ(set("radius", "50"), 0);
    EXPECT_EQ(p.radius, 50);
    EXPECT_EQ(set("radius", "51"), kParamRefused);
    EXPECT_EQ(problem, "'51' is out of range; allowed: an integer from 1 to 50");
    EXPECT_EQ(set("radius", "2.5"), kParamRefused);
    EXPECT_EQ(problem, "'2.5' is not an integer; allowed: an integer from 1 to 50");
    EXPECT_EQ(p.radius, 50);  // a refusal leaves the field alone

    EXPECT_EQ(set("gamma", "0.1"), 0);
    EXPECT_EQ(p.gamma, 0.1);
    EXPECT_EQ(set("gamma", "0.09"), kParamRefused);
    EXPECT_EQ(problem, "'0.09' is out of range; allowed: a number from 0.10 to 10.00");
    EXPECT_EQ(set("gamma", "nan"), kParamRefused);

    // Choices are the panel's texts in lower case, spaces as hyphens.
    EXPECT_EQ(ParamAllowed(*FindParam(kKit, "mode")),
              "one of compute, darken-only, lighten");
    EXPECT_EQ(set("mode", "darken-only"), 0);
    EXPECT_EQ(p.mode, 1);
    EXPECT_EQ(set("mode", "Lighten"), kParamRefused);
    EXPECT_EQ(problem, "'Lighten' is not a choice; allowed: one of compute, darken-only, lighten");

    EXPECT_EQ(set("complement", ""), 0);
    EXPECT_EQ(p.complement, 1);

    // A file that cannot be read gives its own code, not a refusal.
    EXPECT_EQ(set("curve", "missing.crv"), kErrCannotOpen);
    EXPECT_EQ(set("curve", "lift.crv"), 0);
    EXPECT_EQ(p.loaded, 1);
    EXPECT_EQ(ParamAllowed(*FindParam(kKit, "curve")), "a \"Curve 1.0\" file (.crv)");
    EXPECT_EQ(ParamDefaultText(*FindParam(kKit, "gamma")), "2.20");
    EXPECT_EQ(ParamDefaultText(*FindParam(kKit, "mode")), "darken-only");
}

TEST(ModuleKit, PanelValuesAreRangeCheckedAndReportChanges)
{
    auto params = CreateParams(kKit);
    const ParamDecl& radius = *FindParam(kKit, "radius");
    const ParamDecl& mode = *FindParam(kKit, "mode");
    const ParamDecl& gamma = *FindParam(kKit, "gamma");
    EXPECT_FALSE(ParamSetInt(radius, *params, 3));  // unchanged
    EXPECT_TRUE(ParamSetInt(radius, *params, 4));
    EXPECT_FALSE(ParamSetInt(radius, *params, 0));
    EXPECT_EQ(ParamInt(radius, *params), 4);
    EXPECT_TRUE(ParamSetInt(mode, *params, 2));
    EXPECT_FALSE(ParamSetInt(mode, *params, 3));  // three entries
    EXPECT_TRUE(ParamSetReal(gamma, *params, 10.0));
    EXPECT_FALSE(ParamSetReal(gamma, *params, 10.5));
    EXPECT_EQ(ParamReal(gamma, *params), 10.0);
}

TEST(ModuleKit, DeclarationsThatDoNotHoldTogetherAreNamed)
{
    TransformModule bad = kKit;
    bad.params[0].defaultValue = 60;
    EXPECT_EQ(CheckModule(bad), "kit: --radius: the default is outside the range");
    bad = kKit;
    bad.params[2].defaultValue = 3;
    EXPECT_EQ(CheckModule(bad), "kit: --mode: the default is not an entry");
    bad = kKit;
    bad.params[2].choices = "a|b";
    EXPECT_EQ(CheckModule(bad), "kit: --mode: as many names as labels are needed");
    bad = kKit;
    bad.params[1].field = Field(&KitParams::radius);
    EXPECT_EQ(CheckModule(bad), "kit: --gamma: no field of its type");
    bad = kKit;
    bad.params[3].name = "amount";
    EXPECT_EQ(CheckModule(bad), "kit: --amount: the name is the command line's own");
    bad = kKit;
    bad.params[4].inPanel = true;
    EXPECT_EQ(CheckModule(bad),
              "kit: --curve: a file is the command line's; the panel loads its own");
    bad = kKit;
    bad.params[1].name = "radius";
    EXPECT_EQ(CheckModule(bad), "kit: --radius: declared twice");
    bad = kKit;
    bad.params.push_back({.name = "pair", .type = ParamType::Group, .members = "radius|gamma",
                          .help = "two at once", .inPanel = false});
    EXPECT_EQ(CheckModule(bad), "kit: --pair: 'gamma' is not an integer parameter of the module");
    bad = kKit;
    bad.params[0].firstCode = 200;
    EXPECT_EQ(CheckModule(bad), "kit: --radius: a code for entries of no choice");
}

TEST(ModuleKit, EveryRegisteredModuleHoldsTogetherAndOpensFromItsCommand)
{
    for (const TransformModule& m : Transforms()) {
        EXPECT_EQ(CheckModule(m), "") << m.name;
        if (m.commandId == 0) continue;
        // Its command is in the table and enabled by the registration alone.
        const Command* command = FindCommand(m.commandId);
        ASSERT_NE(command, nullptr) << m.name;
        EXPECT_EQ(command->owner, CommandOwner::Module) << m.name;
        EXPECT_TRUE(CommandBuilt(*command)) << m.name;
    }
    // A transformation nobody has registered stays grey.
    EXPECT_FALSE(CommandBuilt(*FindCommand(4004)));  // Warp
    EXPECT_EQ(PanelKindOf(4044), 56);
    EXPECT_EQ(PanelKindOf(kCmdOpen), 0);
}

TEST(Recipe, TheExampleModuleOfTheArchitectureDocumentRuns)
{
    const TransformModule* module = FindTransform("invert-channel");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(CheckModule(*module), "");
    Image card, result;
    ASSERT_EQ(MakeTestCard(card, kImageColor, 30, 20), 0);
    auto params = CreateParams(*module);
    std::string problem;
    ASSERT_EQ(ParamSetText(*FindParam(*module, "channel"), *params, "green", problem), 0);
    ASSERT_EQ(RunTransformToImage(*module, *params, &card, result), 0);
    for (int32_t y = 0; y < 20; y += 7) {
        for (int32_t x = 0; x < 30; x += 5) {
            const uint8_t* in = card.rows[y] + x * 3;
            const uint8_t* out = result.rows[y] + x * 3;
            EXPECT_EQ(out[0], in[0]);
            EXPECT_EQ(out[1], 255 - in[1]);
            EXPECT_EQ(out[2], in[2]);
        }
    }
    EXPECT_NE(TransformReference(false).find("--channel CHOICE  the channel that becomes its negative; "
                                             "one of red, green, blue, default red"),
              std::string::npos);
}

}  // namespace
}  // namespace lv
