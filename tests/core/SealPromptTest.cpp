#include "lockdown/SealPrompt.h"
#include "fakes/FakeRunLoop.h"
#include "lockdown/SealOverlays.h"

#include <gtest/gtest.h>
#include <memory>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    struct SealPromptTest : testing::Test {
        SealPromptTest()
        {
            const auto endAs = [this](const char* how) {
                return [this, how] {
                    ending += how;
                    prompt.reset();
                };
            };
            const auto isRight = [](const std::string& text) { return text == "abc"; };
            prompt = std::make_unique<SealPrompt>(SealPrompt::Question { .title = "BREAK SEAL",
                                                      .message = "",
                                                      .validate = isRight,
                                                      .onSuccess = endAs("accepted"),
                                                      .onCancel = endAs("cancelled") },
                runLoop);
            prompt->appear();
        }

        FakeRunLoop runLoop;
        std::string ending;
        std::unique_ptr<SealPrompt> prompt;
    };

    TEST_F(SealPromptTest, StaysOpenAndMarkedAfterEachRefusal)
    {
        for (const auto* text : { "", "abc ", "ABC" }) {
            prompt->field().text.set(text);
            EXPECT_EQ(prompt->field().text.get(), text);
            prompt->field().onSubmit();
            ASSERT_TRUE(prompt) << text;
            EXPECT_TRUE(prompt->wrong.get());
            EXPECT_EQ(prompt->password.get(), "");
        }
        prompt->field().text.set("abc");
        EXPECT_TRUE(prompt->wrong.get());
        prompt->submit();
        runLoop.advance(20s);
        EXPECT_EQ(ending, "accepted");
    }

    TEST_F(SealPromptTest, CancelsTenSecondsAfterTheLastChangeOfTheText)
    {
        runLoop.advance(9900ms);
        prompt->field().text.set("a");
        runLoop.advance(9900ms);
        prompt->submit(); // Empties the field.
        runLoop.advance(9900ms);
        prompt->submit(); // Changes nothing.
        ASSERT_TRUE(prompt);
        runLoop.advance(20s);
        EXPECT_EQ(ending, "cancelled");
    }

    TEST(AccentTextFieldCoordinator, KeepsReturnAndNoOtherCommandFromTheField)
    {
        int submitted = 0;
        AccentTextField field;
        AccentTextField::Coordinator coordinator(field);
        EXPECT_TRUE(coordinator.doCommand(TextCommand::InsertNewline));
        field.onSubmit = [&] { ++submitted; };
        field.text.get = [] { return "shown"; };
        coordinator.update(field);
        EXPECT_FALSE(coordinator.needsReplacement("shown"));
        EXPECT_TRUE(coordinator.needsReplacement("show"));
        EXPECT_FALSE(coordinator.doCommand(TextCommand::CancelOperation));
        EXPECT_TRUE(coordinator.doCommand(TextCommand::InsertNewline));
        EXPECT_EQ(submitted, 1);
    }

    TEST(SealHoldIndicator, ShowsAHoldAboveAThousandth)
    {
        HoldIndicatorModel model;
        const struct {
            double progress;
            bool isShown;
            double filledWidth;
        } rows[] { { 0, false, 0 }, { 0.0005, false, 0.11 }, { 0.002, true, 0.44 },
            { 0.5, true, 110 }, { 1, true, 220 } };
        for (const auto& row : rows) {
            model.progress.set(row.progress);
            const auto body = SealHoldIndicator(model).body();
            EXPECT_EQ(body.isShown(), row.isShown) << row.progress;
            EXPECT_DOUBLE_EQ(body.filledWidth(), row.filledWidth);
        }
    }

} // namespace

} // namespace quillox
