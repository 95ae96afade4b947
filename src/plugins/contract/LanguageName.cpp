#include "plugins/contract/LanguageName.h"

#include <algorithm>
#include <iterator>

namespace quarl::plugins {
namespace {

struct Row {
  quint16 language;
  const char* name;
};

// In ascending order of the id.
constexpr Row kRows[] = {
    {0x0000, "Language Neutral"},
    {0x0400, "Process Default Language"},
    {0x0401, "Arabic (Saudi Arabia)"},
    {0x0402, "Bulgarian (Bulgaria)"},
    {0x0403, "Catalan (Catalan)"},
    {0x0404, "Chinese (Traditional, Taiwan)"},
    {0x0405, "Czech (Czech Republic)"},
    {0x0406, "Danish (Denmark)"},
    {0x0407, "German (Germany)"},
    {0x0408, "Greek (Greece)"},
    {0x0409, "English (United States)"},
    {0x040a, "Spanish (Spain, Traditional Sort)"},
    {0x040b, "Finnish (Finland)"},
    {0x040c, "French (France)"},
    {0x040d, "Hebrew (Israel)"},
    {0x040e, "Hungarian (Hungary)"},
    {0x040f, "Icelandic (Iceland)"},
    {0x0410, "Italian (Italy)"},
    {0x0411, "Japanese (Japan)"},
    {0x0412, "Korean (Korea)"},
    {0x0413, "Dutch (Netherlands)"},
    {0x0414, "Norwegian, Bokm\xc3\xa5l (Norway)"},
    {0x0415, "Polish (Poland)"},
    {0x0416, "Portuguese (Brazil)"},
    {0x0418, "Romanian (Romania)"},
    {0x0419, "Russian (Russia)"},
    {0x041a, "Croatian (Croatia)"},
    {0x041b, "Slovak (Slovakia)"},
    {0x041c, "Albanian (Albania)"},
    {0x041d, "Swedish (Sweden)"},
    {0x041e, "Thai (Thailand)"},
    {0x041f, "Turkish (Turkey)"},
    {0x0421, "Indonesian (Indonesia)"},
    {0x0422, "Ukrainian (Ukraine)"},
    {0x0423, "Belarusian (Belarus)"},
    {0x0424, "Slovenian (Slovenia)"},
    {0x0425, "Estonian (Estonia)"},
    {0x0426, "Latvian (Latvia)"},
    {0x0427, "Lithuanian (Lithuania)"},
    {0x0429, "Persian (Iran)"},
    {0x042a, "Vietnamese (Vietnam)"},
    {0x042d, "Basque (Basque)"},
    {0x042f, "Macedonian (North Macedonia)"},
    {0x0436, "Afrikaans (South Africa)"},
    {0x0439, "Hindi (India)"},
    {0x043e, "Malay (Malaysia)"},
    {0x0456, "Galician (Galician)"},
    {0x0800, "System Default Language"},
    {0x0804, "Chinese (Simplified, China)"},
    {0x0807, "German (Switzerland)"},
    {0x0809, "English (United Kingdom)"},
    {0x080a, "Spanish (Mexico)"},
    {0x080c, "French (Belgium)"},
    {0x0810, "Italian (Switzerland)"},
    {0x0813, "Dutch (Belgium)"},
    {0x0814, "Norwegian, Nynorsk (Norway)"},
    {0x0816, "Portuguese (Portugal)"},
    {0x081a, "Serbian (Latin, Serbia and Montenegro)"},
    {0x0c04, "Chinese (Traditional, Hong Kong S.A.R.)"},
    {0x0c07, "German (Austria)"},
    {0x0c09, "English (Australia)"},
    {0x0c0a, "Spanish (Spain)"},
    {0x0c0c, "French (Canada)"},
    {0x0c1a, "Serbian (Cyrillic, Serbia and Montenegro)"},
    {0x1004, "Chinese (Simplified, Singapore)"},
    {0x1009, "English (Canada)"},
    {0x100c, "French (Switzerland)"},
    {0x1409, "English (New Zealand)"},
    {0x1809, "English (Ireland)"},
};

constexpr bool Below(const Row& a, const Row& b) {
  return a.language < b.language;
}
static_assert(std::is_sorted(std::begin(kRows), std::end(kRows), Below));

}  // namespace

QString LanguageName(quint16 language) {
  const auto* const row = std::lower_bound(std::begin(kRows), std::end(kRows), Row{language, ""}, Below);
  return row == std::end(kRows) || row->language != language ? QString() : QString::fromUtf8(row->name);
}

}  // namespace quarl::plugins
