#include "shell/preferences.h"

#include <gtest/gtest.h>

#include <string>

namespace lv {
namespace {

TEST(Preferences, EmptyStoreAndGarbageLeaveDefaults)
{
    MemoryStore store;
    Preferences p;
    p.borderWidth = 99;
    p.tempDirectory = "/old";
    PreferencesLoad(store, p);
    EXPECT_EQ(p, Preferences());

    for (const char* key : {"workspace", "border", "defaultres", "nfilemenu", "defaultfileopentype",
                            "defaultfilesavetype"}) {
        store.Set(kPreferencesGroup, key, "abc 1.2.3 x% 1e");
    }
    store.Set(kPreferencesGroup, "confirm", "maybe");
    store.Set(kPreferencesGroup, "undo", "lots");
    store.Set(kPreferencesGroup, "pcddirectory", "");
    store.Set(kPreferencesGroup, "tempdirectory", std::string(400, 'x'));  // too long to take
    PreferencesLoad(store, p);
    EXPECT_EQ(p, Preferences());
}

TEST(Preferences, ValuesAreParsedFieldByField)
{
    MemoryStore store;
    store.Set(kPreferencesGroup, "confirm", "no");
    store.Set(kPreferencesGroup, "workspace", "0 0.5 2.0");
    store.Set(kPreferencesGroup, "border", "3 bad 0.1");  // unreadable red stays 255
    store.Set(kPreferencesGroup, "pcddirectory", "\"/media/photo cd\"");
    store.Set(kPreferencesGroup, "startupdirectory", "/home/me");  // "/" splits unquoted text
    store.Set(kPreferencesGroup, "defaultres", "300.50");
    store.Set(kPreferencesGroup, "undo", "multiple");
    store.Set(kPreferencesGroup, "nfilemenu", "25");
    store.Set(kPreferencesGroup, "defaultfileopentype", "11");
    Preferences p;
    PreferencesLoad(store, p);
    EXPECT_FALSE(p.confirmClose);
    EXPECT_EQ(p.workspaceColor, (std::array<uint8_t, 3>{0, 128, 255}));
    EXPECT_EQ(p.borderWidth, 3);
    EXPECT_EQ(p.borderColor, (std::array<uint8_t, 3>{255, 26, 255}));
    EXPECT_EQ(p.pcdDirectory, "/media/photo cd");
    EXPECT_EQ(p.startupDirectory, "/");
    EXPECT_EQ(p.defaultResolution, 300.5);
    EXPECT_EQ(p.undoLevels, 2);
    EXPECT_EQ(p.recentCount, 10);
    EXPECT_EQ(p.defaultOpenFilter, 11);

    store.Set(kPreferencesGroup, "nfilemenu", "-3");
    store.Set(kPreferencesGroup, "undo", "none");
    PreferencesLoad(store, p);
    EXPECT_EQ(p.recentCount, 0);
    EXPECT_EQ(p.undoLevels, 0);
}

TEST(Preferences, SaveWritesTheStoredFormsAndLoadsBack)
{
    Preferences p;
    p.confirmClose = false;
    p.workspaceColor = {10, 64, 200};
    p.borderWidth = 12;
    p.borderColor = {0, 255, 1};
    p.pcdDirectory = "/mnt/cd";
    p.tempDirectory = "/var/tmp/lumivue tmp";
    p.defaultResolution = 72.0;
    p.undoLevels = 2;
    p.recentCount = 6;
    p.defaultOpenFilter = 3;
    p.defaultSaveFilter = 7;
    p.orientOnOpen = false;
    MemoryStore store;
    EXPECT_EQ(PreferencesSave(store, p), 0);
    const auto& values = store.groups.at("Preferences");
    EXPECT_EQ(values.size(), 12u);
    EXPECT_EQ(values.at("orient"), "no");
    EXPECT_EQ(values.at("confirm"), "no");
    EXPECT_EQ(values.at("workspace"), "0.0392 0.2510 0.7843");
    EXPECT_EQ(values.at("border"), "12 0.0000 1.0000 0.0039");
    EXPECT_EQ(values.at("startupdirectory"), "\"\"");
    EXPECT_EQ(values.at("tempdirectory"), "\"/var/tmp/lumivue tmp\"");
    EXPECT_EQ(values.at("defaultres"), "72.00");
    EXPECT_EQ(values.at("undo"), "multiple");
    EXPECT_EQ(values.at("nfilemenu"), "6");

    Preferences back;
    PreferencesLoad(store, back);
    EXPECT_EQ(back, p);
}

TEST(SessionState, VersionGatesTheWholeGroup)
{
    MemoryStore store;
    SessionState s;
    s.recentFiles[0] = "stale";
    StateLoad(store, 4, s);
    EXPECT_EQ(s, SessionState());

    store.Set(kStateGroup, "openfile0", "\"/a.tif\"");
    store.Set(kStateGroup, "defaultpcdres", "5");
    StateLoad(store, 4, s);  // no version
    EXPECT_EQ(s.recentFiles[0], "");
    store.Set(kStateGroup, "version", "2.0");
    StateLoad(store, 4, s);
    EXPECT_EQ(s, SessionState());
    store.Set(kStateGroup, "version", "1.0");
    StateLoad(store, 4, s);
    EXPECT_EQ(s.recentFiles[0], "/a.tif");
    EXPECT_EQ(s.defaultPcdRes, 5);
}

TEST(SessionState, RecentCountBrowseFieldsAndRoundTrip)
{
    SessionState s;
    for (size_t i = 0; i < s.recentFiles.size(); ++i) s.recentFiles[i] = "/f" + std::to_string(i);
    s.recentFiles[1] = "";
    s.defaultPcdRes = 2;
    s.toolBarSide = 1;
    s.printMargins = {0.5, 1.25, 0.0, 2.0};
    s.browse = {0, 1, 2, 3, 4, 5};
    s.jpegQuality = {80, 1};
    MemoryStore store;
    EXPECT_EQ(StateSave(store, s), 0);
    const auto& values = store.groups.at("State");
    EXPECT_EQ(values.size(), 16u);
    EXPECT_EQ(values.at("version"), "1.0");
    EXPECT_EQ(values.at("openfile1"), "\"\"");
    EXPECT_EQ(values.at("openfile9"), "\"/f9\"");
    EXPECT_EQ(values.at("printmargins"), "0.5000 1.2500 0.0000 2.0000");
    EXPECT_EQ(values.at("browse"), "0 1 2 3 4 5");
    EXPECT_EQ(values.at("jpegquality"), "80 1");

    SessionState back;
    StateLoad(store, 10, back);
    EXPECT_EQ(back, s);

    StateLoad(store, 3, back);  // only the first three slots are read
    EXPECT_EQ(back.recentFiles[0], "/f0");
    EXPECT_EQ(back.recentFiles[2], "/f2");
    EXPECT_EQ(back.recentFiles[3], "");
    StateLoad(store, 99, back);
    EXPECT_EQ(back.recentFiles[9], "/f9");

    store.Set(kStateGroup, "browse", "7 7 7 7 7");  // the sixth field is optional
    store.Set(kStateGroup, "printmargins", "1 x");
    StateLoad(store, 0, back);
    EXPECT_EQ(back.browse, (std::array<int32_t, 6>{7, 7, 7, 7, 7, 0}));
    EXPECT_EQ(back.printMargins, (std::array<double, 4>{1.0, 0.0, 0.0, 0.0}));
}

}  // namespace
}  // namespace lv
