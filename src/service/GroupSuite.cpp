#include "service/GroupSuite.h"

#include <mutex>

#include "platform/defaults/UserDefaults.h"
#include "styles/QLTNoteTextStyle.h"

namespace quillet {

// Each client of the service has its imports started on a thread of its own; preferences and styles are shared.
void readGroupSuite() {
    static std::mutex reading;
    const std::lock_guard lock(reading);
    platform::UserDefaults::standard().addSuiteNamed(kGroupSuite);
    QLTNoteTextStyle::reloadStylesFromDefaults();
}

} // namespace quillet
