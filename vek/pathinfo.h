// vek::PathInfo: the table of named directories.
//
// An installer places `pathinfo.ini` beside the executable; the table is that file and the built-in
// keys HOSTNAME, COMPUTERNAME, SystemRoot and WINDIR. A value may refer to a key that is set
// already by %KEY%, ${KEY} or {KEY}. Keys and references are case-insensitive. The file is read as
// text in the system's ANSI code page.
//
// Not thread-safe: one thread makes, reads and destroys the table.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>

#include "vek/base/no_copy.h"
#include "vek/exception.h"

namespace vek {

class PathInfo : public NoCopy {
  public:
    // "PathInfo Error: " and the message.
    class Error : public ExceptionOf<Error> {
      public:
        explicit Error(const std::string& message);
        Error(const std::string& message, const Exception& causedBy);
    };

    // Sets the built-in keys only. Throws Error if the Windows directory can't be found.
    PathInfo();

    // Sets the built-in keys and those of `file`. Throws Error, also if the file can't be read or
    // is in UTF-16; its cause says so.
    explicit PathInfo(const std::string& file);

    virtual ~PathInfo() = default;

    // Returns the table of this process, made at the first call from `pathinfo.ini` beside the
    // executable. Owned by this class until `destroy`.
    //
    // Throws Error. If the file can't be read, the table with the built-in keys is kept: later
    // calls return it and don't read the file again.
    static PathInfo& instance();

    // Deletes the table of this process, if there is one; `instance` then makes a new one.
    static void destroy();

    // Returns instance().get(key, file).
    static std::string lookup(const std::string& key, const std::string& file);

    // Returns the directory of `key`, and unless `file` is empty, a backslash and `file`. Throws
    // Error for an unknown key.
    std::string get(const std::string& key, const std::string& file) const;

    // Returns `path` without the directory of `key` and the separator after it; `path` unchanged if
    // it isn't below that directory. Case and the kind of separator don't matter. Throws Error for
    // an unknown key.
    std::string relativePath(const std::string& path, const std::string& key) const;

    // Sets `key` to `value`, with its references expanded and one separator at its end removed.
    void set(const std::string& key, const std::string& value);

  private:
    void load(const std::string& file);
    std::string expand(const std::string& value) const;
    // Both return the first key of `values`, in the order of the table and after `former` unless
    // that is null, to which `foldedText` refers; null if there is none. The second one looks only
    // at the references that begin at `open`; their first closing character is at `firstClose`.
    const std::string* nextReference(const std::string& foldedText,
                                     const std::string* former) const;
    const std::string* keyBetween(const std::string& foldedText, std::size_t open,
                                  std::size_t firstClose, const std::string* former) const;

    struct Spellings {
        // The key as the last `set` spelled it.
        std::string last;
        // The key in all spellings, each of which has its own entry in `values`.
        std::set<std::string> all;
    };

    // Key as spelled, to its expanded value.
    std::map<std::string, std::string> values;
    // By the key in lower case.
    std::map<std::string, Spellings, std::less<>> foldedKeys;
};

}  // namespace vek
