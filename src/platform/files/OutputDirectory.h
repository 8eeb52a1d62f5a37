// The directory that outputs are written to, such that nothing is ever replaced by accident, left half written or lost.
//
// An output is built under a temporary name in the directory itself, gets its attributes and times there, and is then
// moved to its name in one step that fails when the name is taken. Temporary entries are locked by the process that
// builds them, so that a later one can tell a dead import's remains from work in progress.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/base/Result.h"
#include "platform/files/FileDescriptor.h"

namespace platform {

class FileWrapper;
class URL;

// A file or package under construction. Removed, with all in it, unless it was moved into place.
class PendingOutput {
  public:
    PendingOutput(PendingOutput&& other) noexcept;
    PendingOutput& operator=(PendingOutput&&) = delete;
    ~PendingOutput();

    // Of the file, for reading and writing, or of the package's directory. Set times through it last of all: contents
    // move them.
    int descriptor() const { return descriptor_.get(); }
    // What errors name as the place, and what APIs that need a path may use.
    std::string path() const { return joinedPath(directoryPath_, temporaryName_); }

    Result<> write(std::string_view bytes); // appends to the file
    // Makes empty files in the package for children of these names, so that their contents alone are missing. One that
    // cannot be made is left to writeChildren, which tells why.
    void createEmptyFiles(std::span<const std::string_view> names);
    // Into the package. Empty files that the wrapper has no children for are removed.
    Result<> writeChildren(const FileWrapper& from);

    // Moves the output to its name. When the name is taken (516), or the move fails otherwise, the output is still
    // pending and another name may be tried. A name that is not one path component is refused (514).
    Result<> moveIntoPlace(std::string_view name);
    // The same, for saving over an existing entry, which disappears in the same step and is then removed.
    Result<> moveReplacing(std::string_view name);

  private:
    friend class OutputDirectory;
    PendingOutput(int directory, std::string directoryPath, std::string temporaryName, FileDescriptor descriptor,
                  bool isDirectory);
    void settle();

    int directory_;
    std::string directoryPath_;
    std::string temporaryName_; // "" when settled
    FileDescriptor descriptor_;
    std::vector<EmptyFile> emptyFiles_;
    bool isDirectory_;
};

// Pending outputs refer to it and must not outlive it.
class OutputDirectory {
  public:
    static Result<OutputDirectory> openURL(const URL& url);
    // A directory opened elsewhere (O_PATH will do); the path is for messages.
    OutputDirectory(FileDescriptor directory, std::string path)
        : directory_(std::move(directory)), path_(std::move(path)) {}
    OutputDirectory(OutputDirectory&&) = default;
    OutputDirectory& operator=(OutputDirectory&&) = delete;
    ~OutputDirectory() { removeSpareScratchDirectory(); }

    const std::string& path() const { return path_; }
    int descriptor() const { return directory_.get(); }
    // The descriptor becomes the caller's; the directory is of no more use then.
    FileDescriptor takeDescriptor() { return std::move(directory_); }

    // Whether anything has the name: a dangling symbolic link has, since moving onto it would fail. What cannot be
    // looked up (no permission, name too long) counts as free, and writing there will give the error.
    bool isReachable(std::string_view name) const;

    // The name when it is free, else the first free one of candidate(1), candidate(2), … Numbers found taken for this
    // name are not tried again, so that ten thousand notes of one title do not look at each other's names.
    std::string firstFreeName(const std::string& name, const std::function<std::string(std::size_t)>& candidate);

    Result<PendingOutput> createFile();
    Result<PendingOutput> createPackage();

    // A working directory for one output, private to its owner. Held as long as the descriptor is open.
    Result<FileDescriptor> createScratchDirectory(std::string_view name);
    // Takes a scratch directory back when its output is done. Emptied, it waits under a hidden name to be the next one:
    // file systems are slow at making entries where they have just deleted some, and slower with each one deleted.
    // What cannot be removed stays, and the error names it.
    Result<> retireScratchDirectory(std::string_view name, FileDescriptor descriptor);
    // To be called when no more outputs follow; the destructor does it too.
    void removeSpareScratchDirectory();
    // Removes an entry with all in it, without following links.
    Result<> remove(std::string_view name);

    // An empty regular file for writing: a new one, or an existing one cut to nothing. Links, directories, fifos and
    // devices of that name are refused and left alone.
    Result<FileDescriptor> openLogFile(std::string_view name);

    // Removes temporary entries and scratch directories whose process has died; answers how many. Lists the directory
    // once: call it at the start of an import, not for each output.
    std::size_t removeLeftovers();

    // Everything written so far onto the disk, in one call for all outputs.
    Result<> flush();

  private:
    struct SpareDirectory {
        std::string name;
        FileDescriptor descriptor; // none: there is no spare one
    };

    Result<PendingOutput> create(bool isDirectory);
    bool removeIfLeftover(const std::string& name);

    FileDescriptor directory_;
    std::string path_;
    std::unordered_map<std::string, std::size_t> takenNumbers_; // name → highest number known to be taken
    SpareDirectory spareScratch_;
};

} // namespace platform
