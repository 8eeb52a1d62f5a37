#include "service/ImportRun.h"

#include <utility>

namespace quillet {

using platform::Dictionary;

void ImportRun::begin(platform::OperationQueue& queue, platform::Listener& listener,
                      Quillet_ENEX_Import::ProgressBlock progress, QLTImportENEXProtocol::Reply reply) {
    auto work = listener.beginWork([weak = weak_from_this()] {
        if (const auto run = weak.lock()) run->cancel();
    });
    // The importer keeps the reply, and with it this run, until it has replied.
    auto finish = [self = shared_from_this(), reply = std::move(reply),
                   work = std::move(work)](Dictionary answer) mutable {
        reply(std::move(answer));
        work.reset();
    };
    queue.addOperationWithBlock(
        [self = shared_from_this(), progress = std::move(progress), finish = std::move(finish)]() mutable {
            self->importer_->setProgressBlock(std::move(progress));
            self->importer_->importENEXFile(self->call_.file, self->call_.options, self->call_.directory,
                                            std::move(finish));
            if (self->cancelled_) self->importer_->cancel(); // it came before the import had begun
        });
}

void ImportRun::cancel() {
    cancelled_ = true;
    importer_->cancel();
}

} // namespace quillet
