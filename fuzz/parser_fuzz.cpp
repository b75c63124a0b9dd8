// The field parser against fields that are split off beforehand, and the two number readers against the C
// library's, which read the same numbers where the text is plainly decimal.
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fuzz/support.h"
#include "gpsengine/platform/object.h"
#include "gpsengine/text/number.h"
#include "gpsengine/text/parser.h"

namespace {

constexpr const char* kDelimiters[] = {",*", ",", " ", ": "};  // those that the decoders use

struct Field {
  CString text;
  CString behind;  // what stands after the delimiter that ends it
};

// An empty text has no field; any other has one more than it has delimiters.
std::vector<Field> Split(const CString& text, const CString& delimiters) {
  std::vector<Field> fields;
  for (int start = 0, end = 0; !text.IsEmpty() && start <= text.GetLength(); start = end + 1) {
    for (end = start; end < text.GetLength() && delimiters.Find(text[end]) < 0; ++end) {
    }
    fields.push_back({text.Mid(start).Left(end - start), text.Mid(end + 1)});
  }
  return fields;
}

// What stands after the white space, up to the first character that no number has, so that the C library is
// shown no hexadecimal number and no word for one.
std::string Head(std::u16string_view text, const char16_t* pszCharacters, std::size_t& nStart) {
  nStart = std::min(text.find_first_not_of(u" \t\n\v\f\r"), text.size());
  const auto head = text.substr(nStart, text.find_first_not_of(pszCharacters, nStart) - nStart);
  return std::string(head.begin(), head.end());
}

void CheckInt(std::u16string_view text) {
  std::size_t start = 0;
  const std::string head = Head(text, u"0123456789+-", start);
  char* end = nullptr;
  const long long expected = std::strtoll(head.c_str(), &end, 10);
  const bool good = end != head.c_str() && expected < INT_MAX && expected > INT_MIN;

  int value = 4711;
  Require(ParseInt(text, &value) == good, "a whole number is read or refused");
  Require(value == (good ? expected : 4711), "a whole number has its value");
}

void CheckDouble(std::u16string_view text) {
  std::size_t start = 0;
  const std::string head = Head(text, u"0123456789+-.eE", start);
  char* end = nullptr;
  const double expected = std::strtod(head.c_str(), &end);
  const bool good = end != head.c_str() && std::fabs(expected) != HUGE_VAL;

  double value = 4711.0;
  int remaining = -1;
  Require(ParseDouble(text, value, remaining) == good, "a decimal number is read or refused");
  Require(std::memcmp(&value, &expected, sizeof value) == 0,
          "a decimal number has its value to the last bit");
  const auto rest = static_cast<int>(text.size() - start) - static_cast<int>(end - head.c_str());
  Require(remaining == (good ? rest : -1), "the rest is counted");
}

// What one operation reads of the field that is due, and what it leaves if it fails, which it says in the way
// that it was told to.
void Read(CParser& parser, unsigned nKind, bool throwing, const Field* field) {
  CString text("before"), expectedText("before");
  int whole = 4711, expectedWhole = 4711, rest = 0;
  double decimal = 4711.0, expectedDecimal = 4711.0;
  bool good = false, expected = field != nullptr;
  try {
    good = nKind == 0   ? parser.GetNextString(text)
           : nKind == 1 ? parser.GetInt(whole)
           : nKind == 2 ? parser.GetDouble(decimal)
                        : parser.SkipField();
    Require(good || !throwing, "a read that fails throws where it was told to");
  } catch (const CUserException&) {
    Require(throwing, "a read that fails throws only where it was told to");
  }
  if (expected && nKind == 0) expectedText = field->text;
  if (expected && nKind == 1) expected = ParseInt(field->text.View(), &expectedWhole);
  if (expected && nKind == 2) expected = ParseDouble(field->text.View(), expectedDecimal, rest);
  if (!expected) expectedDecimal = 4711.0;
  Require(good == expected, "a field is read or refused");
  Require(text == expectedText && whole == expectedWhole && decimal == expectedDecimal,
          "a field has its value, and one that is refused leaves what was there");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
  Input input(pData, nSize);
  const unsigned choice = input.Byte();
  const std::string_view operations = input.TakeThrough('\n');
  const CString text = TextOf(input.Rest(), (choice & 8) != 0);
  const std::vector<Field> fields = Split(text, kDelimiters[choice & 3]);
  for (const Field& field : fields) {
    CheckInt(field.text.View());
    CheckDouble(field.text.View());
  }
  bool throwing = (choice & 4) != 0;
  CParser parser(text, kDelimiters[choice & 3], throwing);
  std::size_t next = 0;
  for (const char operation : operations) {
    const unsigned kind = static_cast<unsigned char>(operation) % 6;
    if (kind == 4) {
      throwing = !throwing;
      parser.SetExceptionThrowing(throwing);
    } else if (kind == 5) {
      Require(next == 0 || parser.GetRemainingBuffer() == fields[next - 1].behind,
              "what remains after a field");
    } else {
      Read(parser, kind, throwing, next < fields.size() ? &fields[next++] : nullptr);
    }
  }
  return 0;
}
