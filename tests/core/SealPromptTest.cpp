#include "lockdown/SealPrompt.h"
#include "fakes/FakeRunLoop.h"

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

} // namespace

} // namespace quillox
