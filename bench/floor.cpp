// The floor under an import: streams the same export with the same parser, decodes and hashes every attachment, and
// writes the same number of files with the same sizes and attributes, but converts nothing.
//     floor EXPORT MANIFEST DIRECTORY
// The manifest lists what an import wrote, in order: "note" lines, each followed by "dir NAME" and "file NAME SIZE"
// lines.
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/foundation/Base64.h"
#include "platform/foundation/Digest.h"
#include "platform/foundation/URL.h"
#include "platform/xml/InputStream.h"
#include "platform/xml/XMLParser.h"

namespace {

struct Entry {
    bool isDirectory = false;
    std::string name;
    std::size_t size = 0;
};
using Note = std::vector<Entry>;

std::vector<Note> readManifest(const char* path) {
    std::vector<Note> notes;
    std::ifstream stream(path);
    for (std::string line; std::getline(stream, line);) {
        if (line == "note") {
            notes.emplace_back();
            continue;
        }
        const bool isDirectory = line.starts_with("dir ");
        Entry entry{isDirectory, line.substr(isDirectory ? 4 : 5), 0};
        if (!isDirectory) {
            const std::size_t blank = entry.name.rfind(' ');
            entry.size = std::strtoull(entry.name.c_str() + blank, nullptr, 10);
            entry.name.resize(blank);
        }
        notes.back().push_back(std::move(entry));
    }
    return notes;
}

// A date that no other output has, be it of another run: ext4 looks for files with the same attributes, to share their
// block, and most notes have a date of their own. Two runs that begin anywhere in fifty years hardly ever meet.
std::string nextDate() {
    constexpr std::uint32_t kFiftyYears = 1'577'880'000;
    static std::time_t next = std::random_device{}() % kFiftyYears;
    const std::time_t date = next++;
    std::tm parts{};
    std::string text(sizeof "2024-05-01T09:15:02Z", '\0');
    text.resize(std::strftime(text.data(), text.size(), "%FT%TZ", ::gmtime_r(&date, &parts)));
    return text;
}

// The attributes that an output carries, with values of the usual sizes.
void setAttributes(int descriptor, bool isPackage) {
    std::string finderInfo(32, '\0');
    finderInfo[8] = isPackage ? 0x20 : 0;
    finderInfo[9] = 0x10;
    const std::string date = nextDate();
    constexpr std::string_view kTags = "bench";
    constexpr std::string_view kTagList(
        "bplist00\xa1\x01\x55"
        "bench\x08\x0a\0\0\0\0\0\0\x01\x01\0\0\0\0\0\0\0\x02\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x10",
        50);
    ::fsetxattr(descriptor, "user.com.apple.FinderInfo", finderInfo.data(), finderInfo.size(), 0);
    ::fsetxattr(descriptor, "user.com.tesseral.quillet.creationDate", date.data(), date.size(), 0);
    ::fsetxattr(descriptor, "user.xdg.tags", kTags.data(), kTags.size(), 0);
    ::fsetxattr(descriptor, "user.com.apple.metadata:_kMDItemUserTags", kTagList.data(), kTagList.size(), 0);
    const timespec times[2] = {{1717236902, 0}, {1717236902, 0}};
    ::futimens(descriptor, times);
}

class Floor : public platform::XMLParserDelegate {
  public:
    Floor(std::vector<Note> notes, std::string directory)
        : notes_(std::move(notes)), directory_(std::move(directory)) {}

    void parserDidStartElement(platform::XMLParser& parser, std::string_view name, platform::XMLAttributes) override {
        inData_ = name == "data";
        parser.setDeliversPieces(inData_);
        if (inData_) base64_.clear();
    }
    void parserFoundCharacters(platform::XMLParser&, std::string_view text) override {
        if (inData_) base64_ += text;
    }
    void parserFoundCDATA(platform::XMLParser&, std::string_view bytes) override { content_ += bytes; }
    void parserDidEndElement(platform::XMLParser& parser, std::string_view name) override {
        if (name == "data") {
            const auto bytes = platform::base64Decoded(base64_);
            if (bytes) hashed_ ^= platform::md5Checksum(*bytes)[0];
            inData_ = false;
            parser.setDeliversPieces(false);
        } else if (name == "note") {
            if (next_ < notes_.size()) write(notes_[next_++]);
            content_.clear();
        }
    }
    std::size_t notesWritten() const { return next_; }

  private:
    void write(const Note& note) {
        std::string base = directory_;
        int package = -1;
        for (const Entry& entry : note) {
            if (entry.isDirectory) {
                base = directory_ + "/" + entry.name;
                ::mkdir(base.c_str(), 0755);
                package = ::open(base.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
                continue;
            }
            const std::string path = base + "/" + entry.name;
            const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
            if (filler_.size() < entry.size) filler_.resize(entry.size, 'x');
            if (::write(file, filler_.data(), entry.size) < 0) std::perror(path.c_str());
            if (package < 0) setAttributes(file, false);
            ::close(file);
        }
        if (package >= 0) {
            setAttributes(package, true);
            ::close(package);
        }
    }

    std::vector<Note> notes_;
    std::string directory_;
    std::size_t next_ = 0;
    bool inData_ = false;
    std::string base64_, content_, filler_;
    unsigned hashed_ = 0;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 64;
    Floor floor(readManifest(argv[2]), argv[3]);
    auto stream = platform::InputStream::inputStreamWithURL(platform::URL::fileURLWithPath(argv[1]));
    if (!stream) return 1;
    platform::XMLParser parser(*std::move(stream));
    parser.setDelegate(&floor);
    if (!parser.parse()) return 1;
    const int directory = ::open(argv[3], O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ::syncfs(directory);
    std::printf("%zu notes\n", floor.notesWritten());
}
