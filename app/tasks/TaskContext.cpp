#include "app/tasks/TaskContext.h"

#include "app/tasks/RecoveryState.h"
#include "texts/LanguageSection.h"
#include "texts/TextFormat.h"

void ShowPercent(const TaskContext& context, const char* messageKey, int percent)
{
    context.board.SetText("percent",
                          FormatText("%s %d%%", context.messages.Get(messageKey), percent));
    context.board.SetValue("progress", percent);
}

std::string
StageText(LanguageSection& messages, const StageKeys& keys, const RecoveryTarget& target)
{
    if (target.IsImage()) {
        return FormatText("%s %s", messages.Get(keys.image), target.ImageName());
    }
    const char16_t letter = target.Letter();
    const bool isLetter = (letter >= u'A' && letter <= u'Z') || (letter >= u'a' && letter <= u'z');
    if (isLetter) {
        return FormatText(messages.Get(keys.letter), letter);
    }
    return FormatText(messages.Get(keys.number), unsigned{letter});
}
