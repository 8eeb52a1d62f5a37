#include "service/GroupSuite.h"

#include "platform/defaults/UserDefaults.h"
#include "styles/QLTNoteTextStyle.h"

namespace quillet {

void readGroupSuite() {
    platform::UserDefaults::standard().addSuiteNamed(kGroupSuite);
    QLTNoteTextStyle::reloadStylesFromDefaults();
}

} // namespace quillet
