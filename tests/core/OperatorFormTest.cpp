#include "ui/OperatorForm.h"
#include "config/SettingsFields.h"
#include "core/SetupMachine.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;
    using Texts = std::vector<std::string>;

    class OperatorFormTest : public testing::Test, protected SetupMachine {
    protected:
        OperatorFormTest()
        {
            updates.configure(true);
            state().settings.set(siteSettings());
        }

        static const SettingToggle& toggle(bool KioskSettings::*field)
        {
            return *std::ranges::find(OperatorForm::toggles, field, &SettingToggle::field);
        }
        void setOn(bool KioskSettings::*field, bool isOn) { form.setOn(toggle(field), isOn); }

        OperatorForm form { state(), { fileSystem, screens, watchdog, updates }, "1.2" };
    };

    TEST_F(OperatorFormTest, DomainsAreAddedCleanAndOnceAndKeepTheirOrder)
    {
        const std::pair<const char*, const char*> rows[] {
            { " HTTPS://Pay.Example/cart?x ", "pay.example" }, { "shop.EXAMPLE", "" },
            { "pay.example.", "" }, { "", "" }, { " . ", "" }, { "a.example", "a.example" }
        };
        Texts listed { "Shop.example" };
        state().settings.update([&](auto& settings) { settings.allowedDomains = listed; });
        auto field = form.domainField();
        for (const auto& [typed, added] : rows) {
            const auto saves = defaults.saves.size();
            field.text.set(typed);
            EXPECT_EQ(field.text.get(), typed);
            field.onSubmit();
            EXPECT_EQ(field.text.get(), "");
            if (*added)
                listed.push_back(added);
            EXPECT_EQ(form.domains(), listed) << typed;
            EXPECT_EQ(defaults.saves.size() - saves, *added ? 1U : 0U) << typed;
        }
        form.removeDomain(1);
        form.removeDomain(2);
        EXPECT_EQ(stored().allowedDomains, (Texts { "Shop.example", "a.example" }));
        EXPECT_EQ(OperatorForm::removeName("a.example"), "Remove a.example");
    }

    TEST_F(OperatorFormTest, EachChangeIsStoredAtOnceAndNothingElseIs)
    {
        form.urlField().text.set("https://museum.example/section/");
        std::vector<std::function<void()>> changes {
            [&] { form.urlField().text.set("https://museum.example/hall/"); },
            [&] { form.setNavPosition(NavPosition::topLeft); },
            [&] { form.setDisplay(7); },
            [&] { form.setNotchBarColor(NotchBarColor::pageBackground); },
            [&] { form.setIdleReset(300); },
            [&] { form.passwordField().text.set("abc"); },
        };
        for (const auto& toggle : OperatorForm::toggles)
            changes.emplace_back([&, isOn = !form.isOn(toggle)] {
                form.setOn(toggle, isOn);
                EXPECT_EQ(form.isOn(toggle), isOn) << toggle.name;
            });
        for (const auto& change : changes) {
            int told = 0;
            const auto observation = form.observe([&] { ++told; });
            const auto saves = defaults.saves.size();
            change();
            EXPECT_EQ(stored(), settings());
            change();
            EXPECT_EQ(defaults.saves.size(), saves + 1);
            EXPECT_EQ(told, 1);
        }
        runLoop.advance(1s);
        EXPECT_EQ(agents.calls, "+");
        const auto isChanged = [this](const SettingsField& field) {
            return encodedField(field, stored()) != encodedField(field, {});
        };
        EXPECT_EQ(std::ranges::count_if(settingsFields, isChanged), 18) << "but for a folder's";
    }

    TEST_F(OperatorFormTest, KeepAliveShowsWhatTheSystemHasUntilTheOperatorSpeaks)
    {
        const auto keepAlive = &KioskSettings::keepAlive;
        using enum AgentService::Status;
        for (const auto status : { Enabled, RequiresApproval, Enabled, NotRegistered, NotFound }) {
            agents.status = status;
            form.appear();
            runLoop.advance(1s);
            EXPECT_EQ(stored().keepAlive, status == Enabled);
        }
        EXPECT_EQ(agents.calls, "");

        // An answer that comes late does not undo a wish.
        agents.status = NotRegistered;
        form.appear();
        for (const bool isOn : { true, false, true })
            setOn(keepAlive, isOn);
        form.disappear();
        form.appear();
        runLoop.advance(1s);
        EXPECT_TRUE(stored().keepAlive && agents.status == Enabled);
        EXPECT_EQ(agents.calls, "+");

        agents.failure = "no bus";
        setOn(keepAlive, false);
        runLoop.advance(1s);
        EXPECT_FALSE(stored().keepAlive);
        EXPECT_EQ(log.lines(), Texts { "Quillox: watchdog update failed: no bus" });
        form.appear();
        runLoop.advance(1s);
        EXPECT_TRUE(stored().keepAlive);
    }

    TEST_F(OperatorFormTest, UpdatesFollowTheSwitchAndTheButton)
    {
        journal.take();
        setOn(&KioskSettings::autoUpdate, false);
        form.checkForUpdates();
        setOn(&KioskSettings::autoUpdate, true);
        EXPECT_EQ(journal.take(),
            (Texts { "checks-", "downloads-", "check now", "checks+", "downloads+" }));
        EXPECT_EQ(form.versionLine(), "Version 1.2");
    }

    TEST_F(OperatorFormTest, DisplayMenuFollowsTheScreensAndKeepsTheChoice)
    {
        form.appear();
        EXPECT_EQ(form.displayLabel(), "PRIMARY (AUTOMATIC)");
        screens.plugIn({ 9, "Wall", { 0, 0, 640.4, 479.6 }, 0 });
        EXPECT_EQ(form.displayItems().at(2), (DisplayInfo { 9, "Wall — 640×480" }));
        form.setDisplay(9);
        EXPECT_EQ(form.displayLabel(), "DISPLAY 9");
        int changes = 0;
        const auto observation = form.observe([&] { ++changes; });
        screens.unplug(9);
        EXPECT_EQ(changes, 1);
        EXPECT_EQ(form.displayLabel(), "PRIMARY (AUTOMATIC)");
        EXPECT_EQ(form.displayItems(),
            (std::vector<DisplayInfo> {
                { 0, "Primary (automatic)" }, { 7, "Studio — 1512×982" } }));
        EXPECT_EQ(stored().displayID, 9U);
        form.disappear();
        screens.plugIn({ 9, "Wall", { 0, 0, 1920, 1080 }, 0 });
        EXPECT_EQ(changes, 1);
        form.appear();
        EXPECT_EQ(form.displayLabel(), "DISPLAY 9");
    }

    TEST_F(OperatorFormTest, IdleResetIsNamedAlsoOutsideTheMenu)
    {
        const std::pair<std::int64_t, const char*> rows[] { { 0, "Off" }, { 10, "10s" },
            { 45, "45s" }, { 60, "1 min" }, { 3600, "1 hour" }, { -1, "-1s" } };
        for (const auto& [seconds, label] : rows) {
            form.setIdleReset(seconds);
            EXPECT_EQ(form.idlePresetLabel(), label);
        }
    }

    TEST_F(OperatorFormTest, PathCanBeLockedOnceTheAddressHasOne)
    {
        const auto& path = toggle(&KioskSettings::restrictToPath);
        for (const auto& [url, hasPath] : std::map<const char*, bool> {
                 { "https://a.example", false }, { "https://a.example/", false },
                 { "a.example/hall", false }, { "https://a.example/hall", true } }) {
            form.setOn(path, false);
            form.urlField().text.set(url);
            form.setOn(path, true);
            EXPECT_EQ(form.isOn(path), hasPath) << url;
            EXPECT_EQ(form.canChange(path), hasPath) << url;
            EXPECT_EQ(form.help(path),
                hasPath ? "Stay within this URL's section, e.g. /exhibits/…"
                        : "Add a path to the URL above to use this");
        }
    }

    TEST_F(OperatorFormTest, FolderTakesThePlaceOfTheAddress)
    {
        fileSystem.addFile("/srv/site/index.html");
        form.chooseSource();
        dialogs.choose(std::nullopt);
        EXPECT_FALSE(form.isLocal());
        dialogs.choose("/srv/site/");
        EXPECT_TRUE(form.isLocal() && !form.localWarn());
        EXPECT_EQ(form.localTitle(), "site / index.html");
        for (const auto* gone : { "/srv/site/tour.html", "/srv/elsewhere/index.html" }) {
            dialogs.choose(gone);
            EXPECT_TRUE(form.isLocal() && form.localWarn()) << gone;
            EXPECT_FALSE(state().hasSource());
        }
        dialogs.choose("/start.htm");
        EXPECT_EQ(stored(), settings());
        EXPECT_TRUE(settings().localPath == "/" && settings().localEntry == "start.htm");
        form.clearSource();
        EXPECT_EQ(stored(), siteSettings());
        EXPECT_FALSE(form.isLocal() || form.localWarn());
    }

    TEST_F(OperatorFormTest, PasswordIsHiddenAgainEachTimeTheScreenAppears)
    {
        EXPECT_TRUE(form.passwordField().isSecure);
        EXPECT_EQ(form.eyeSymbol(), "eye");
        form.toggleShowExitPassword();
        EXPECT_FALSE(form.passwordField().isSecure);
        EXPECT_EQ(form.eyeSymbol(), "eye.slash");
        form.domainField().text.set("a");
        form.appear();
        EXPECT_TRUE(form.passwordField().isSecure && form.domainField().text.get().empty());
    }

} // namespace

} // namespace quillox
