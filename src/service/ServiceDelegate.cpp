#include "service/ServiceDelegate.h"

#include "service/ImportClient.h"
#include "service/ServiceInterfaces.h"
#include "service/ServiceNames.h"

namespace quillet {

bool ServiceDelegate::listenerShouldAcceptNewConnection(platform::Listener& listener,
                                                        const std::shared_ptr<platform::Connection>& connection) {
    connection->setExportedObject(std::make_shared<ImportClient>(listener, connection, program_, imports_));
    return true;
}

platform::ServiceDescription serviceDescription() {
    return {.busName = kServiceBusName,
            .objectPath = kServicePath,
            .interfaces = std::string(kServiceInterfaces),
            .objectInterfaces = {kProtocolInterface, kJobsInterface},
            .lists = {kReplyLists.begin(), kReplyLists.end()}};
}

} // namespace quillet
