#include "console/console_dialogs.h"

#include <algorithm>
#include <charconv>

#include "platform/desktop.h"
#include "platform/services.h"
#include "text/text.h"
#include "text/utf8.h"

namespace korvex {
namespace {

struct PlainChoice {
  const char* caption;
  BoxAnswer answer;
};

std::vector<PlainChoice> Choices(BoxButtons buttons) {
  switch (buttons) {
    case BoxButtons::kOkCancel:
      return {{"OK", BoxAnswer::kOk}, {"Cancel", BoxAnswer::kCancel}};
    case BoxButtons::kRetryCancel:
      return {{"Retry", BoxAnswer::kRetry}, {"Cancel", BoxAnswer::kCancel}};
    default:
      return {{"OK", BoxAnswer::kOk}};
  }
}

// "&" marks the letter after it, "&&" is an ampersand.
std::string WithoutMarks(const std::string& caption) {
  std::string text;
  for (std::size_t i = 0; i < caption.size(); ++i) {
    if (caption[i] == '&' && ++i == caption.size()) break;
    text += caption[i];
  }
  return text;
}

std::string_view FirstLetter(std::string_view text) {
  return text.empty() ? text : text.substr(0, FirstUtf8(text).length);
}

// An answer that fits several captions chooses none of them.
std::optional<std::size_t> OnlyMatch(const std::vector<std::string>& captions, auto matches) {
  const auto first = std::ranges::find_if(captions, matches);
  if (first == captions.end() || std::find_if(first + 1, captions.end(), matches) != captions.end())
    return std::nullopt;
  return static_cast<std::size_t>(first - captions.begin());
}

std::optional<std::size_t> Choice(const std::vector<std::string>& captions,
                                  std::string_view answer) {
  // The whole caption first: another one may begin with it, or it may be a number.
  const auto whole = OnlyMatch(captions, [&](const auto& c) { return EqualText(c, answer); });
  if (whole) return whole;
  std::size_t number = 0;
  const char* end = answer.data() + answer.size();
  if (std::from_chars(answer.data(), end, number).ptr == end) {
    if (number >= 1 && number <= captions.size()) return number - 1;
    return std::nullopt;
  }
  return OnlyMatch(captions, [&](const auto& c) { return EqualText(FirstLetter(c), answer); });
}

}  // namespace

BoxAnswer ConsoleDialogs::ShowPlain(const PlainMessage& message) {
  line_.WriteLine(message.text);
  if (!message.cause.empty()) line_.WriteLine("Cause: " + message.cause);
  const std::vector<PlainChoice> choices = Choices(message.buttons);
  std::vector<std::string> captions;
  for (const PlainChoice& choice : choices) captions.push_back(choice.caption);
  // Without an answer it is the last caption: Cancel, where there is a choice.
  return choices[Answer(captions, 0, captions.size() - 1)].answer;
}

std::string ConsoleDialogs::ShowButtons(const ButtonMessage& message) {
  line_.WriteLine(message.prompt);
  if (!message.cause.empty()) line_.WriteLine("Cause: " + message.cause);
  if (message.buttons.empty()) return "";
  Sound* sound = Platform().sound;
  if (sound && terminal_.CanAsk()) PlayMessageSound(*sound, message.sound);

  std::vector<std::string> captions;
  for (const std::string& button : message.buttons) captions.push_back(WithoutMarks(button));
  // A default that is none of the buttons counts as the first one.
  const auto wanted = static_cast<std::size_t>(std::max(message.default_button, 0));
  return message.buttons[Answer(captions, wanted < captions.size() ? wanted : 0, 0)];
}

std::string ConsoleDialogs::BrowseForFolder(void*, const std::string&) {
  return "";
}

std::string ConsoleDialogs::BrowseNetwork(void*, const std::string&) {
  return "";
}

std::size_t ConsoleDialogs::Answer(const std::vector<std::string>& captions,
                                   std::size_t default_button, std::size_t unanswered) {
  std::string row;
  for (const std::string& caption : captions) {
    row += (row.empty() ? "[" : " [") + caption + "]";
  }
  line_.WriteLine(row);
  if (captions.size() == 1) return 0;
  if (terminal_.CanAsk()) {
    if (const auto choice = Ask(captions, default_button)) return *choice;
  }
  line_.WriteLine("Nobody answered: " + captions[unanswered]);
  return unanswered;
}

std::optional<std::size_t> ConsoleDialogs::Ask(const std::vector<std::string>& captions,
                                               std::size_t default_button) {
  for (;;) {
    line_.Write("Your choice (Enter: " + captions[default_button] + ")? ");
    const std::optional<std::string> line = terminal_.ReadLine();
    if (!line) {
      // The cursor still stands behind the question.
      line_.WriteLine("");
      return std::nullopt;
    }
    const std::string_view answer = TrimBlanks(*line);
    if (answer.empty()) return default_button;
    if (const auto choice = Choice(captions, answer)) return choice;
    line_.WriteLine("Please type one of the captions, its first letter or its number.");
  }
}

}  // namespace korvex
