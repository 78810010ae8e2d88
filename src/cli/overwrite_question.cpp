#include "cli/overwrite_question.h"

namespace kelvane {

OverwriteAnswer OverwriteQuestion::Ask(const std::string& path)
{
    if (fOverwrite == 0) return OverwriteAnswer::kSkip;
    if (fOverwrite == 2) return OverwriteAnswer::kOverwrite;
    fQuestions << "The following file already exists:\n\n" << path << "\n\nOverwrite?\n";
    for (;;) {
        fQuestions << "[o] Overwrite  [O] Overwrite All  [s] Skip  [S] Skip All  [c] Cancel: "
                   << std::flush;
        std::string answer;
        if (!std::getline(fAnswers, answer)) return OverwriteAnswer::kCancel;
        if (answer == "o") return OverwriteAnswer::kOverwrite;
        if (answer == "s") return OverwriteAnswer::kSkip;
        if (answer == "c") return OverwriteAnswer::kCancel;
        if (answer == "O") fOverwrite = 2;
        if (answer == "S") fOverwrite = 0;
        if (fOverwrite != 1) return Ask(path);
    }
}

}  // namespace kelvane
