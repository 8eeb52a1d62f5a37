// The names under which the service is reached, and the types of what it says: a contract with every client.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "platform/ipc/MessageCoding.h"
#include "service/QLTImportENEXProtocol.h"

namespace quillet {

inline const std::string kServiceBusName = "com.tesseral.Quillet.ENEXImport1";
inline const std::string kServicePath = "/com/tesseral/Quillet/ENEXImport1";

inline const std::string kProtocolInterface = "com.tesseral.Quillet.ENEXImport1.QLTImportENEXProtocol";
inline constexpr std::string_view kImportMethod = "ImportENEXFile"; // (sa{sv}s) -> a{sv}

inline const std::string kJobsInterface = "com.tesseral.Quillet.ENEXImport1.Jobs";
inline constexpr std::string_view kStartImportMethod = "StartImportENEXFile"; // (sa{sv}s) -> o
inline constexpr std::string_view kConfinementProperty = "Confinement";
inline const std::string kProgressSignal =
    "Progress"; // file URL, bytes read, bytes in all, notes written, notes failed
inline constexpr std::string_view kProgressSignature = "(sttuu)";

inline const std::string kJobInterface = "com.tesseral.Quillet.ENEXImport1.Job";
inline constexpr std::string_view kCancelMethod = "Cancel";
inline constexpr std::string_view kGetReplyMethod = "GetReply"; // -> a{sv}, waits for the end

inline constexpr std::string_view kImportSignature = "(sa{sv}s)";

// Empty lists of a reply keep these types.
inline constexpr std::array kReplyLists{platform::ListSignature{kItemsReplyKey, "a{sv}"},
                                        platform::ListSignature{kErrorNotesReplyKey, "s"},
                                        platform::ListSignature{"tags", "s"}};

} // namespace quillet
