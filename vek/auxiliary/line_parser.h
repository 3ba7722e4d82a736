// vek::aux::LineParser: reads a text file line by line and passes each line to a callback.
#pragma once

#include <string>

#include "vek/exception.h"

namespace vek::aux {

// The file is in UTF-16, which can't be read as lines of bytes. The description says so; the error
// number is ERROR_NO_UNICODE_TRANSLATION (1113).
class FileEncodingError : public ExceptionOf<FileEncodingError, FsError> {
  public:
    explicit FileEncodingError(const std::string& failedPath);

    std::string description() const override;
};

class LineParser {
  public:
    // Receives the lines of one parse. All its operations run on the thread that called `parse`;
    // `parse` passes their exceptions on.
    class LineCallback {
      public:
        virtual ~LineCallback() = default;

        // Receives one line, without its line end. Returns false to end the parse at once, which is
        // no error.
        virtual bool processLine(const std::string& line) = 0;

        // Called before the first line.
        virtual void parseStart() {}

        // Called after the last line, also if `processLine` has ended the parse; not if reading
        // failed.
        virtual void parseEnd() {}

      protected:
        // The running parser; null outside a parse. Not owned. It stays set if reading failed.
        LineParser* parser = nullptr;

        friend class LineParser;
    };

    // Passes each line of the file `path` to `callback`. CR LF and LF end a line. A last line
    // without a line end is delivered, an empty remainder is not. Lines may have any length.
    //
    // Lines are bytes; by convention of the files that are read here, text in the system's ANSI
    // code page. The byte order mark of UTF-8, which some editors write, is skipped.
    //
    // Throws NoSuchFileError, FileAccessError or FsError if the file can't be opened, FsError if it
    // can't be read, and FileEncodingError if it begins with the byte order mark of UTF-16.
    void parse(const std::string& path, LineCallback& callback);
};

}  // namespace vek::aux
