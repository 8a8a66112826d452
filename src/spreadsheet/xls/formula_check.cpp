#include "spreadsheet/xls/formula_check.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "spreadsheet/bytes/little_endian.h"
#include "text/text.h"

namespace korvex {
namespace {

// A formula is a sequence of tokens in reverse Polish order: operands first, then the operator. The
// tokens of operands exist in three classes, 0x20 apart, which mean the same here. In BIFF5 the
// upper bits of a row are flags and a column takes one byte.
enum Token : std::uint8_t {
  kAdd = 0x03,
  kSubtract = 0x04,
  kMultiply = 0x05,
  kDivide = 0x06,
  kPower = 0x07,
  kLess = 0x09,
  kLessOrEqual = 0x0A,
  kEqual = 0x0B,
  kGreaterOrEqual = 0x0C,
  kGreater = 0x0D,
  kNotEqual = 0x0E,
  kUnaryPlus = 0x12,
  kUnaryMinus = 0x13,
  kPercent = 0x14,
  kParentheses = 0x15,
  kText = 0x17,           // uint8 length, in BIFF8 uint8 flags, characters
  kAttribute = 0x19,      // uint8 flags, uint16 data
  kBoolean = 0x1D,        // uint8
  kInteger = 0x1E,        // uint16
  kNumber = 0x1F,         // double
  kFixedFunction = 0x21,  // uint16 number of the function
  kFunction = 0x22,       // uint8 number of arguments, uint16 number of the function
  kReference = 0x24,      // uint16 row, column of one place
  kArea = 0x25,           // uint16 first and last row, first and last column
};
enum Function : std::uint16_t {
  kCount = 0,
  kIf = 1,
  kSum = 4,
  kAverage = 5,
  kMin = 6,
  kMax = 7,
  kSqrt = 20,
  kExp = 21,
  kLn = 22,
  kLog10 = 23,
  kAbs = 24,
  kInt = 25,
  kRound = 27,
};
// A formula that changes by itself, like NOW(). Applications ask for its calculation on load
// although they have calculated it.
constexpr std::uint8_t kVolatileAttribute = 0x01;
constexpr std::uint8_t kChooseAttribute = 0x04;
constexpr std::uint8_t kSumAttribute = 0x10;

// An entry of the stack: a number, a text, or the numbers of many cells. Of an area only what the
// functions need is kept.
struct Operand {
  double sum = 0;
  double least = 0;
  double greatest = 0;
  int count = 0;  // of numbers
  bool is_one = true;
  bool is_boolean = false;
  std::optional<std::string> text;
};

// Applications take numbers for equal that differ only in their last digits, but not all draw the
// line at the same digit.
bool AreNearlyEqual(double a, double b) {
  return a != b && std::fabs(a - b) <= 1e-12 * std::max(std::fabs(a), std::fabs(b));
}

class Evaluation {
 public:
  Evaluation(std::span<const std::byte> tokens, bool is_biff8, const SheetCells& cells,
             std::size_t& cells_left)
      : rest_(tokens), is_biff8_(is_biff8), cells_(cells), cells_left_(cells_left) {}

  ResultCheck Check(bool is_text) {
    bool is_known = !rest_.empty();
    while (is_known && !rest_.empty()) is_known = Step();
    if (is_volatile_ || is_ambiguous_) return ResultCheck::kUnknown;
    if (!is_known || stack_.size() != 1 || !stack_[0].is_one) {
      return looks_at_something_ || !looks_at_cells_ ? ResultCheck::kDoubted
                                                     : ResultCheck::kUnknown;
    }
    // An error comes out as a number that is not finite, and is no zero either.
    const Operand& result = stack_[0];
    const bool is_empty =
        is_text ? result.text && result.text->empty() : !result.text && result.sum == 0;
    return is_empty ? ResultCheck::kTrue : ResultCheck::kFalse;
  }

 private:
  // Each handles one token and returns false where the formula cannot be worked out.
  bool Step();
  bool PushText();
  bool PushArea(int first_row, int last_row, int first_column, int last_column);
  bool Calculate(std::uint8_t token);
  bool Compare(std::uint8_t token);
  bool Call(std::size_t arguments, std::uint16_t function);
  bool CallOnNumber(std::uint16_t function);
  bool Choose(std::size_t arguments);

  bool Push(double number) {
    stack_.push_back({number, number, number, 1, true, false, {}});
    return true;
  }
  bool IsClear(bool is_clear) {
    is_ambiguous_ |= !is_clear;
    return is_clear;
  }
  bool PushBoolean(bool value) {
    Push(value ? 1 : 0);
    stack_.back().is_boolean = true;
    return true;
  }
  std::optional<double> PopNumber() {
    if (stack_.empty() || !stack_.back().is_one || stack_.back().text) return {};
    const double number = stack_.back().sum;
    stack_.pop_back();
    return number;
  }
  // Removes this many bytes from the formula and returns them; null when it is shorter.
  const std::byte* Take(std::size_t size) {
    if (rest_.size() < size) return nullptr;
    const std::byte* const data = rest_.data();
    rest_ = rest_.subspan(size);
    return data;
  }
  int RowAt(const std::byte* data) const { return LoadU16(data) & (is_biff8_ ? 0xFFFF : 0x3FFF); }

  std::span<const std::byte> rest_;
  bool is_biff8_;
  const SheetCells& cells_;
  std::size_t& cells_left_;
  std::vector<Operand> stack_;
  bool is_volatile_ = false;
  bool is_ambiguous_ = false;  // applications give different results
  bool looks_at_cells_ = false;
  bool looks_at_something_ = false;
};

// Conditions also leave jumps in a formula, so that a program works out only one branch. They are
// ignored: both branches are worked out, and Choose takes one.
bool Evaluation::Step() {
  const std::size_t column_size = is_biff8_ ? 2 : 1;
  std::uint8_t token = LoadU8(Take(1));
  if (token >= 0x40 && token < 0x80) token = static_cast<std::uint8_t>((token & 0x1F) | 0x20);
  const std::byte* data = nullptr;
  switch (token) {
    case kInteger:
      return (data = Take(2)) != nullptr && Push(LoadU16(data));
    case kNumber:
      return (data = Take(8)) != nullptr && Push(LoadF64(data));
    case kBoolean:
      if ((data = Take(1)) == nullptr) return false;
      return PushBoolean(LoadU8(data) != 0);
    case kText:
      return PushText();
    case kReference:
      data = Take(2 + column_size);
      return data != nullptr &&
             PushArea(RowAt(data), RowAt(data), LoadU8(data + 2), LoadU8(data + 2));
    case kArea:
      data = Take(4 + 2 * column_size);
      return data != nullptr && PushArea(RowAt(data), RowAt(data + 2), LoadU8(data + 4),
                                         LoadU8(data + 4 + column_size));
    case kAttribute:
      data = Take(3);
      if (data == nullptr || (LoadU8(data) & kChooseAttribute) != 0) return false;
      is_volatile_ |= (LoadU8(data) & kVolatileAttribute) != 0;
      return (LoadU8(data) & kSumAttribute) == 0 || Call(1, kSum);
    case kFixedFunction:
      return (data = Take(2)) != nullptr && CallOnNumber(LoadU16(data));
    case kFunction:
      return (data = Take(3)) != nullptr && Call(LoadU8(data) & 0x7F, LoadU16(data + 1));
    case kParentheses:
      return true;
    default:
      return token >= kLess && token <= kNotEqual ? Compare(token) : Calculate(token);
  }
}

// Only ASCII texts, which need no decoding.
bool Evaluation::PushText() {
  const std::byte* const head = Take(is_biff8_ ? 2 : 1);
  if (head == nullptr || (is_biff8_ && LoadU8(head + 1) != 0)) return false;
  const std::size_t length = LoadU8(head);
  const std::byte* const characters = Take(length);
  if (characters == nullptr) return false;
  Operand operand;
  operand.text.emplace();
  for (std::size_t i = 0; i < length; ++i) {
    if (LoadU8(characters + i) >= 0x80) return false;
    operand.text->push_back(static_cast<char>(LoadU8(characters + i)));
  }
  stack_.push_back(std::move(operand));
  return true;
}

// Puts the cells of an area on the stack; rows and columns are zero-based. Texts in an area of
// several cells do not count, as in SUM. A cell with an error, or an area that is too large, cannot
// be worked out.
bool Evaluation::PushArea(int first_row, int last_row, int first_column, int last_column) {
  looks_at_cells_ = true;
  Operand area;
  area.is_one = first_row == last_row && first_column == last_column;
  const auto size = static_cast<std::size_t>(std::max(last_row - first_row + 1, 0)) *
                    static_cast<std::size_t>(std::max(last_column - first_column + 1, 0));
  if (size > cells_left_) return false;
  cells_left_ -= size;
  bool is_known = true;
  for (int row = first_row; row <= last_row; ++row) {
    const SheetCells::Row cells = cells_.RowOf(row + 1);
    for (int column = first_column; column <= last_column; ++column) {
      const CellValue value = cells_.Value(cells, column + 1);
      if (value.kind == CellKind::kEmpty) continue;
      if (value.kind == CellKind::kError) is_known = false;
      looks_at_something_ |=
          value.kind == CellKind::kText ? !value.text.empty() : value.number != 0;
      if (value.kind == CellKind::kText) {
        if (area.is_one) area.text = std::string(value.text);
        continue;
      }
      // Functions skip the Booleans of an area.
      if (value.kind == CellKind::kBoolean && !area.is_one) continue;
      area.is_boolean |= value.kind == CellKind::kBoolean;
      area.least = area.count == 0 ? value.number : std::min(area.least, value.number);
      area.greatest = area.count == 0 ? value.number : std::max(area.greatest, value.number);
      area.sum += value.number;
      ++area.count;
    }
  }
  stack_.push_back(std::move(area));
  return is_known;
}

// Arithmetic on one or two numbers.
bool Evaluation::Calculate(std::uint8_t token) {
  const std::optional<double> right = PopNumber();
  if (!right) return false;
  switch (token) {
    case kUnaryPlus:
      return Push(*right);
    case kUnaryMinus:
      return Push(-*right);
    case kPercent:
      return Push(*right / 100);
    default:
      break;
  }
  const std::optional<double> left = PopNumber();
  if (!left) return false;
  switch (token) {
    case kAdd:
      return IsClear(!AreNearlyEqual(*left, -*right)) && Push(*left + *right);
    case kSubtract:
      return IsClear(!AreNearlyEqual(*left, *right)) && Push(*left - *right);
    case kMultiply:
      return Push(*left * *right);
    case kDivide:
      return Push(*left / *right);
    case kPower:
      return Push(std::pow(*left, *right));
    default:
      return false;
  }
}

// An empty cell equals both zero and the empty text. Texts are only compared for equality, without
// letter case; their order depends on the language.
bool Evaluation::Compare(std::uint8_t token) {
  if (stack_.size() < 2) return false;
  const Operand right = std::move(stack_.back());
  stack_.pop_back();
  const Operand left = std::move(stack_.back());
  stack_.pop_back();
  if (!left.is_one || !right.is_one) return false;
  if (left.text || right.text) {
    const auto text = [](const Operand& operand) -> std::optional<std::string> {
      return operand.text ? operand.text : operand.count == 0 ? std::optional("") : std::nullopt;
    };
    if (token != kEqual && token != kNotEqual) return false;
    const bool is_equal = text(left) && text(right) && EqualText(*text(left), *text(right));
    return PushBoolean(is_equal == (token == kEqual));
  }
  if (!IsClear(left.is_boolean == right.is_boolean && !AreNearlyEqual(left.sum, right.sum))) {
    return false;
  }
  switch (token) {
    case kLess:
      return PushBoolean(left.sum < right.sum);
    case kLessOrEqual:
      return PushBoolean(left.sum <= right.sum);
    case kEqual:
      return PushBoolean(left.sum == right.sum);
    case kGreaterOrEqual:
      return PushBoolean(left.sum >= right.sum);
    case kGreater:
      return PushBoolean(left.sum > right.sum);
    default:
      return PushBoolean(left.sum != right.sum);
  }
}

// Functions of any number of arguments, which may be areas.
bool Evaluation::Call(std::size_t arguments, std::uint16_t function) {
  if (arguments == 0 || stack_.size() < arguments) return false;
  if (function == kIf) return Choose(arguments);
  Operand all;
  for (std::size_t i = 0; i < arguments; ++i) {
    const Operand one = std::move(stack_.back());
    stack_.pop_back();
    if (one.count == 0) continue;
    all.least = all.count == 0 ? one.least : std::min(all.least, one.least);
    all.greatest = all.count == 0 ? one.greatest : std::max(all.greatest, one.greatest);
    all.sum += one.sum;
    all.count += one.count;
    all.is_boolean |= one.is_boolean;
  }
  // Functions count a Boolean that is an argument, but not one in a cell that is referred to.
  if (!IsClear(!all.is_boolean)) return false;
  // Where numbers cancel out, the small rest depends on the order in which they are added.
  const bool cancels =
      std::fabs(all.sum) <= 1e-12 * std::max(std::fabs(all.least), std::fabs(all.greatest));
  if (!IsClear(!cancels || all.sum == 0 || (function != kSum && function != kAverage)))
    return false;
  switch (function) {
    case kCount:
      return Push(all.count);
    case kSum:
      return Push(all.sum);
    case kAverage:
      return Push(all.sum / all.count);
    case kMin:
      return Push(all.least);
    case kMax:
      return Push(all.greatest);
    default:
      return false;
  }
}

// Functions of one number. ROUND has the digits as a second one.
bool Evaluation::CallOnNumber(std::uint16_t function) {
  const double digits = function == kRound ? PopNumber().value_or(NAN) : 0;
  const std::optional<double> number = PopNumber();
  if (!number) return false;
  switch (function) {
    case kSqrt:
      return Push(std::sqrt(*number));
    case kExp:
      return Push(std::exp(*number));
    case kLn:
      return Push(std::log(*number));
    case kLog10:
      return Push(std::log10(*number));
    case kAbs:
      return Push(std::fabs(*number));
    case kInt:
      return Push(std::floor(*number));
    case kRound:
      return Push(std::round(*number * std::pow(10, digits)) / std::pow(10, digits));
    default:
      return false;
  }
}

// IF: condition and both branches are on the stack. Without a second branch the result is 0.
bool Evaluation::Choose(std::size_t arguments) {
  Operand otherwise;
  if (arguments == 3) {
    otherwise = std::move(stack_.back());
    stack_.pop_back();
  }
  if (arguments < 2 || arguments > 3) return false;
  Operand then = std::move(stack_.back());
  stack_.pop_back();
  const std::optional<double> condition = PopNumber();
  if (!condition) return false;
  stack_.push_back(*condition != 0 ? std::move(then) : std::move(otherwise));
  return true;
}

}  // namespace

ResultCheck CheckEmptyResult(std::span<const std::byte> tokens, bool is_text, bool is_biff8,
                             const SheetCells& cells, std::size_t& cells_left) {
  return Evaluation(tokens, is_biff8, cells, cells_left).Check(is_text);
}

}  // namespace korvex
