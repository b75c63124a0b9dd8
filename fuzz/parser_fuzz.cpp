// The field parser against fields that are split off beforehand.
#include <string>
#include <vector>

#include "fuzz/support.h"
#include "gpsengine/platform/object.h"
#include "gpsengine/text/number.h"
#include "gpsengine/text/parser.h"

namespace {

constexpr const char* kDelimiters[] = {",*", ",", " ", ": "};  // those that the decoders use

struct Field {
  CString text;
  CString behind;  // what stands behind the delimiter that ends it
};

// An empty text has no field; any other has one more than it has delimiters.
std::vector<Field> Split(const CString& text, const CString& delimiters) {
  std::vector<Field> fields;
  if (text.IsEmpty()) return fields;
  Field field;
  for (int i = 0; i < text.GetLength(); ++i) {
    if (delimiters.Find(text[i]) < 0) {
      field.text += text[i];
      continue;
    }
    field.behind = text.Mid(i + 1);
    fields.push_back(field);
    field = Field();
  }
  fields.push_back(field);
  return fields;
}

template <class Read>
bool Tried(bool throwing, Read read) {
  try {
    const bool good = read();
    Require(good || !throwing, "a read that fails throws where it was told to");
    return good;
  } catch (const CUserException&) {
    Require(throwing, "a read that fails throws only where it was told to");
    return false;
  }
}

class Reader {
 public:
  Reader(const CString& text, const CString& delimiters, bool throwing)
      : m_Fields(Split(text, delimiters)), m_Parser(text, delimiters, throwing), m_bThrowing(throwing) {}

  void Step(unsigned nOperation) {
    const Field* const field = m_nNext < m_Fields.size() ? &m_Fields[m_nNext] : nullptr;
    switch (nOperation % 6) {
      case 0:
        ReadText(field);
        break;
      case 1:
        ReadInt(field);
        break;
      case 2:
        ReadDouble(field);
        break;
      case 3:
        Require(Tried(m_bThrowing, [this] { return m_Parser.SkipField(); }) == (field != nullptr),
                "a field to skip");
        break;
      case 4:
        m_bThrowing = !m_bThrowing;
        m_Parser.SetExceptionThrowing(m_bThrowing);
        return;
      default:
        CheckRemaining();
        return;
    }
    if (field != nullptr) ++m_nNext;
  }

 private:
  void ReadText(const Field* field) {
    CString text("before");
    const bool good = Tried(m_bThrowing, [&] { return m_Parser.GetNextString(text); });
    Require(good == (field != nullptr) && text == (good ? field->text : CString("before")), "a text field");
  }
  void ReadInt(const Field* field) {
    int expected = 4711;
    const bool number = field != nullptr && ParseInt(field->text.View(), &expected);
    int value = 4711;
    Require(Tried(m_bThrowing, [&] { return m_Parser.GetInt(value); }) == number, "a whole number or none");
    Require(value == expected, "the value of a whole number");
  }
  void ReadDouble(const Field* field) {
    double expected = 0.0;
    int rest = 0;
    const bool number = field != nullptr && ParseDouble(field->text.View(), expected, rest);
    double value = 4711.0;
    Require(Tried(m_bThrowing, [&] { return m_Parser.GetDouble(value); }) == number,
            "a decimal number or none");
    Require(value == (number ? expected : 4711.0), "the value of a decimal number");
  }
  void CheckRemaining() {
    if (m_nNext == 0) return;
    Require(m_Parser.GetRemainingBuffer() == m_Fields[m_nNext - 1].behind, "what remains behind a field");
  }

  const std::vector<Field> m_Fields;
  CParser m_Parser;
  bool m_bThrowing;
  std::size_t m_nNext = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
  Input input(pData, nSize);
  const unsigned choice = input.Byte();
  const std::string_view operations = input.TakeThrough('\n');
  Reader reader(TextOf(input.Rest(), (choice & 8) != 0), kDelimiters[choice & 3], (choice & 4) != 0);
  for (const char operation : operations) reader.Step(static_cast<unsigned char>(operation));
  return 0;
}
