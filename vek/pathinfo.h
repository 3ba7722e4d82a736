// vek::PathInfo: the table of named directories.
//
// An installer places `pathinfo.ini` beside the executable; the table is that file and a few
// built-in keys: HOSTNAME, COMPUTERNAME, SystemRoot and WINDIR. A value may refer to a key that is
// set already by %KEY%, ${KEY} or {KEY}. Keys and references are found in any case.
//
// Nothing here is guarded: the table is made, read and destroyed by one thread.
#pragma once

#include <map>
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

    // The built-in keys alone. Throws Error if the Windows directory can't be found.
    PathInfo();

    // The built-in keys and those of `file`. Throws Error, also if the file can't be read.
    explicit PathInfo(const std::string& file);

    virtual ~PathInfo() = default;

    // The table of this process, made at the first use from `pathinfo.ini` beside the executable.
    // It belongs to this class until `destroy`.
    //
    // Throws Error. If it was the file that failed, the built-in keys stand: later calls give that
    // table and don't read the file again.
    static PathInfo& instance();

    // Deletes the table of this process, if there is one; `instance` then makes a new one.
    static void destroy();

    // The same as instance().get(key, file).
    static std::string lookup(const std::string& key, const std::string& file);

    // The directory of `key`; and, unless `file` is empty, a backslash and `file`. Throws Error for
    // an unknown key.
    std::string get(const std::string& key, const std::string& file) const;

    // `path` less the directory of `key` and the separator behind it; `path` as given if it doesn't
    // lie below. Case and kind of separator don't matter. Throws Error for an unknown key.
    std::string relativePath(const std::string& path, const std::string& key) const;

    // Sets `key` to `value`, with the references in it expanded and one separator at its end
    // removed.
    void set(const std::string& key, const std::string& value);

  private:
    void load(const std::string& file);
    std::string expand(const std::string& value) const;

    // Key as spelled, to its expanded value.
    std::map<std::string, std::string> values;
    // Lower-case key, to the key as the last `set` spelled it.
    std::map<std::string, std::string> foldedKeys;
};

}  // namespace vek
