#pragma once

#include <cstdint>
#include <iostream>
#include <string>

namespace kelvane {

enum class OverwriteAnswer { kOverwrite, kSkip, kCancel };

// Settles whether existing files may be replaced; "all" answers hold for the rest of the run.
class OverwriteQuestion {
public:
    // 0 never, 1 ask, 2 always. The streams are those of a terminal.
    explicit OverwriteQuestion(int32_t overwrite, std::istream& answers = std::cin,
                               std::ostream& questions = std::cerr)
        : fOverwrite(overwrite), fAnswers(answers), fQuestions(questions)
    {
    }
    OverwriteAnswer Ask(const std::string& path);

private:
    int32_t fOverwrite;
    std::istream& fAnswers;
    std::ostream& fQuestions;
};

}  // namespace kelvane
