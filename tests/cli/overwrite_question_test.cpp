#include "cli/overwrite_question.h"

#include <gtest/gtest.h>

#include <sstream>

namespace kelvane {
namespace {

// What becomes of three files that exist, as letters: overwritten, skipped, cancelled. Nothing is
// asked after a cancel.
std::string Outcome(int32_t overwrite, const std::string& answers, std::string& questions)
{
    std::istringstream in(answers);
    std::ostringstream out;
    OverwriteQuestion question(overwrite, in, out);
    std::string outcome;
    for (const char* path : {"/a", "/b", "/c"}) {
        outcome += "osc"[int(question.Ask(path))];
        if (outcome.back() == 'c') break;
    }
    questions = out.str();
    return outcome;
}

size_t Count(const std::string& text, const std::string& what)
{
    size_t count = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        count++;
    return count;
}

constexpr int32_t kNever = 0, kAsk = 1, kAlways = 2;

TEST(OverwriteQuestion, TakesEachAnswerAndKeepsThoseForAll)
{
    const struct {
        int32_t overwrite;
        std::string answers, outcome, asked;
        size_t prompts;
    } rows[] = {
        {kAsk, "o\ns\no\n", "oso", "abc", 3},
        {kAsk, "O\n", "ooo", "a", 1},
        {kAsk, "S\n", "sss", "a", 1},
        {kAsk, "s\nO\nc\n", "soo", "ab", 2},
        {kAsk, "o\nS\no\n", "oss", "ab", 2},
        {kAsk, "s\ns\nO\n", "sso", "abc", 3},
        {kAsk, "c\no\n", "c", "a", 1},
        {kAsk, "o\nc\n", "oc", "ab", 2},
        // What is no answer is asked again; so is an answer with something beside it.
        {kAsk, "\nx\noo\n o\no \ns\nS\n", "sss", "ab", 7},
        // At the end of the answers nothing more is decided for the user.
        {kAsk, "", "c", "a", 1},
        {kAsk, "o\n", "oc", "ab", 2},
        {kAsk, "o\ns", "osc", "abc", 3},
        {kAsk, "nonsense", "c", "a", 2},
        {kNever, "o\nO\n", "sss", "", 0},
        {kAlways, "s\nS\n", "ooo", "", 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(std::tuple(row.overwrite, row.answers)));
        std::string questions;
        EXPECT_EQ(row.outcome, Outcome(row.overwrite, row.answers, questions));
        for (const char path : {'a', 'b', 'c'})
            EXPECT_EQ(row.asked.find(path) != std::string::npos,
                      questions.find(std::string("already exists:\n\n/") + path +
                                     "\n\nOverwrite?") != std::string::npos)
                << path;
        EXPECT_EQ(row.prompts, Count(questions, "[c] Cancel: "));
    }
}

}  // namespace
}  // namespace kelvane
