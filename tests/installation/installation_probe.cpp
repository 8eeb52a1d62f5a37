// What a program finds from the place that it is run from, one line each: the data directory, whether the data file
// there is read, two texts in the user's language.
#include <cstdio>

#include "platform/base/UTF16.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/StringTable.h"
#include "util/DateStrings.h"
#include "util/Markdown.h"

int main() {
    std::puts(platform::Environment::current().dataDirectory.c_str());
    std::puts(quillet::isFileExtensionSupportedMarkdownExtension(u"md") ? "data" : "no data");
    std::puts(platform::utf8FromUTF16(quillet::stringForTimeInterval(2 * 86400)).c_str());
    std::puts(platform::localizedString("Title").c_str());
}
