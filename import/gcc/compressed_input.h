// An input that may be compressed with gzip: a file or standard input, read in pieces.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct gzFile_s;

class compressed_input {
  public:
    /// Opens `name`; "-" is the standard input. A file that cannot be opened ends the run with a message.
    explicit compressed_input(const std::string& name);

    /// The next piece, valid until the next call; empty at the end. A fault of the file or of what is
    /// compressed ends the run with a message.
    std::string_view read();

    /// The name for messages.
    const std::string& shown() const { return shown_; }

  private:
    struct closer {
        void operator()(gzFile_s* stream) const;
    };

    std::string shown_;
    std::unique_ptr<gzFile_s, closer> stream_;
    std::vector<char> piece_;
};
