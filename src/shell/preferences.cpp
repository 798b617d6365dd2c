#include "shell/preferences.h"

#include <algorithm>
#include <new>
#include <vector>

#include "image/pixel.h"
#include "shell/errors.h"
#include "shell/text.h"

namespace lv {

Preferences& CurrentPreferences()
{
    static Preferences preferences;
    return preferences;
}

SessionState& CurrentState()
{
    static SessionState state;
    return state;
}

bool MemoryStore::Get(std::string_view group, std::string_view key, std::string& value) const
{
    auto g = groups.find(group);
    if (g == groups.end()) return false;
    auto v = g->second.find(key);
    if (v == g->second.end()) return false;
    value = v->second;
    return true;
}

int32_t MemoryStore::Set(std::string_view group, std::string_view key, std::string_view value)
{
    try {
        auto g = groups.find(group);
        if (g == groups.end()) g = groups.emplace(std::string(group), decltype(g->second)()).first;
        g->second.insert_or_assign(std::string(key), std::string(value));
        return kOk;
    } catch (const std::bad_alloc&) {
        return kErrOutOfMemory;
    }
}

bool MemoryStore::HasGroup(std::string_view group) const { return groups.count(group) != 0; }

namespace {

// The tokens of one stored value; false when the value is missing or too
// long to be taken.
bool ReadValue(const KeyValueStore& store, std::string_view group, std::string_view key,
               std::vector<std::string>& fields)
{
    fields.clear();
    std::string value;
    if (!store.Get(group, key, value) || value.size() > kMaxStoredValue) return false;
    Tokenize(value, fields);
    return true;
}

// Each helper sets the field only when the token at `index` exists and reads
// as a number.
void TakeInt(const std::vector<std::string>& fields, size_t index, int32_t& field)
{
    int32_t value = 0;
    if (index < fields.size() && ParseInt(fields[index], value) == kOk) field = value;
}

void TakeReal(const std::vector<std::string>& fields, size_t index, double& field)
{
    double value = 0.0;
    if (index < fields.size() && ParseReal(fields[index], value) == kOk) field = value;
}

// A color component stored as 0..1.
void TakeByte(const std::vector<std::string>& fields, size_t index, uint8_t& field)
{
    double value = 0.0;
    if (index < fields.size() && ParseReal(fields[index], value) == kOk) {
        field = static_cast<uint8_t>(Clamp8(RoundToInt(value * 255.0)));
    }
}

// Three color components starting at field `first`.
void TakeColor(const std::vector<std::string>& fields, size_t first, std::array<uint8_t, 3>& color)
{
    for (size_t i = 0; i < 3; ++i) TakeByte(fields, first + i, color[i]);
}

std::string Quoted(std::string_view text) { return FormatText("\"%s\"", text); }

std::string ColorText(const std::array<uint8_t, 3>& color)
{
    return FormatText("%f %f %f", color[0] / 255.0, color[1] / 255.0, color[2] / 255.0);
}

// Writes the values in order and keeps the first failure.
struct Writer {
    KeyValueStore& store;
    std::string_view group;
    int32_t result = kOk;

    void Put(std::string_view key, const std::string& value)
    {
        int32_t code = store.Set(group, key, value);
        if (result == kOk) result = code;
    }
};

constexpr const char* kUndoWords[] = {"none", "single", "multiple"};

}  // namespace

void PreferencesLoad(const KeyValueStore& store, Preferences& preferences)
{
    preferences = Preferences();
    const std::string_view group = kPreferencesGroup;
    if (!store.HasGroup(group)) return;
    try {
        std::vector<std::string> f;
        Preferences& p = preferences;
        if (ReadValue(store, group, "confirm", f)) p.confirmClose = !(!f.empty() && f[0] == "no");
        if (ReadValue(store, group, "workspace", f)) TakeColor(f, 0, p.workspaceColor);
        if (ReadValue(store, group, "border", f)) {
            TakeInt(f, 0, p.borderWidth);
            TakeColor(f, 1, p.borderColor);
        }
        if (ReadValue(store, group, "pcddirectory", f) && !f.empty()) p.pcdDirectory = f[0];
        if (ReadValue(store, group, "startupdirectory", f) && !f.empty()) {
            p.startupDirectory = f[0];
        }
        if (ReadValue(store, group, "tempdirectory", f) && !f.empty()) p.tempDirectory = f[0];
        if (ReadValue(store, group, "defaultres", f)) TakeReal(f, 0, p.defaultResolution);
        if (ReadValue(store, group, "undo", f) && !f.empty()) {
            for (int32_t level = 0; level < 3; ++level) {
                if (f[0] == kUndoWords[level]) p.undoLevels = level;
            }
        }
        if (ReadValue(store, group, "nfilemenu", f)) {
            TakeInt(f, 0, p.recentCount);
            p.recentCount = std::clamp(p.recentCount, 0, kRecentFileSlots);
        }
        if (ReadValue(store, group, "defaultfileopentype", f)) TakeInt(f, 0, p.defaultOpenFilter);
        if (ReadValue(store, group, "defaultfilesavetype", f)) TakeInt(f, 0, p.defaultSaveFilter);
        if (ReadValue(store, group, "orient", f)) p.orientOnOpen = !(!f.empty() && f[0] == "no");
    } catch (const std::bad_alloc&) {
        // The fields read so far stand; the others keep their defaults.
    }
}

int32_t PreferencesSave(KeyValueStore& store, const Preferences& preferences)
{
    try {
        const Preferences& p = preferences;
        Writer w{store, kPreferencesGroup};
        w.Put("confirm", p.confirmClose ? "yes" : "no");
        w.Put("border", FormatText("%d ", p.borderWidth) + ColorText(p.borderColor));
        w.Put("pcddirectory", Quoted(p.pcdDirectory));
        w.Put("startupdirectory", Quoted(p.startupDirectory));
        w.Put("tempdirectory", Quoted(p.tempDirectory));
        w.Put("workspace", ColorText(p.workspaceColor));
        w.Put("defaultres", FormatText("%2f", p.defaultResolution));
        w.Put("undo", kUndoWords[std::clamp(p.undoLevels, 0, 2)]);
        w.Put("nfilemenu", FormatText("%d", p.recentCount));
        w.Put("defaultfileopentype", FormatText("%d", p.defaultOpenFilter));
        w.Put("defaultfilesavetype", FormatText("%d", p.defaultSaveFilter));
        w.Put("orient", p.orientOnOpen ? "yes" : "no");
        return w.result;
    } catch (const std::bad_alloc&) {
        return kErrOutOfMemory;
    }
}

void StateLoad(const KeyValueStore& store, int32_t recentCount, SessionState& state)
{
    state = SessionState();
    const std::string_view group = kStateGroup;
    try {
        std::vector<std::string> f;
        if (!ReadValue(store, group, "version", f) || f.size() != 1 || f[0] != "1.0") return;
        const int32_t count = std::clamp(recentCount, 0, kRecentFileSlots);
        for (int32_t i = 0; i < count; ++i) {
            std::string key = FormatText("openfile%d", i);
            if (ReadValue(store, group, key, f) && !f.empty() && !f[0].empty()) {
                state.recentFiles[static_cast<size_t>(i)] = f[0];
            }
        }
        if (ReadValue(store, group, "defaultpcdres", f)) TakeInt(f, 0, state.defaultPcdRes);
        if (ReadValue(store, group, "ribbonorientation", f)) TakeInt(f, 0, state.toolBarSide);
        if (ReadValue(store, group, "printmargins", f)) {
            for (size_t i = 0; i < state.printMargins.size(); ++i) {
                TakeReal(f, i, state.printMargins[i]);
            }
        }
        // The sixth browse field is newer than the others and may be absent.
        if (ReadValue(store, group, "browse", f)) {
            for (size_t i = 0; i < state.browse.size(); ++i) TakeInt(f, i, state.browse[i]);
        }
        if (ReadValue(store, group, "jpegquality", f)) {
            TakeInt(f, 0, state.jpegQuality[0]);
            TakeInt(f, 1, state.jpegQuality[1]);
        }
    } catch (const std::bad_alloc&) {
        // The fields read so far stand; the others keep their defaults.
    }
}

int32_t StateSave(KeyValueStore& store, const SessionState& state)
{
    try {
        Writer w{store, kStateGroup};
        w.Put("version", "1.0");
        for (int32_t i = 0; i < kRecentFileSlots; ++i) {
            w.Put(FormatText("openfile%d", i), Quoted(state.recentFiles[static_cast<size_t>(i)]));
        }
        w.Put("defaultpcdres", FormatText("%d", state.defaultPcdRes));
        w.Put("ribbonorientation", FormatText("%d", state.toolBarSide));
        const auto& m = state.printMargins;
        w.Put("printmargins", FormatText("%f %f %f %f", m[0], m[1], m[2], m[3]));
        const auto& b = state.browse;
        w.Put("browse", FormatText("%d %d %d %d %d %d", b[0], b[1], b[2], b[3], b[4], b[5]));
        w.Put("jpegquality", FormatText("%d %d", state.jpegQuality[0], state.jpegQuality[1]));
        return w.result;
    } catch (const std::bad_alloc&) {
        return kErrOutOfMemory;
    }
}

}  // namespace lv
