// vek::aux::LineParser: reads a text file line by line and hands each line to a callback.
#pragma once

#include <string>

namespace vek::aux {

class LineParser {
  public:
    // Takes the lines of one parse. All operations run on the thread of `parse`; what they throw
    // leaves it.
    class LineCallback {
      public:
        virtual ~LineCallback() = default;

        // Takes one line, without its line end. False ends the parse at once, which is no error.
        virtual bool processLine(const std::string& line) = 0;

        // Called ahead of the first line.
        virtual void parseStart() {}

        // Called behind the last line, also after a parse that `processLine` has ended; not after a
        // failed read.
        virtual void parseEnd() {}

      protected:
        // The running parser; null outside a parse. Not owned. It stays set after a failed read.
        LineParser* parser = nullptr;

        friend class LineParser;
    };

    // Hands each line of the file `path` to `callback`. CR LF and LF end a line; a last line
    // without a line end is delivered, an empty remainder is not. Lines may be of any length.
    //
    // Throws NoSuchFileError, FileAccessError or FsError if the file can't be opened, FsError if it
    // can't be read.
    void parse(const std::string& path, LineCallback& callback);
};

}  // namespace vek::aux
