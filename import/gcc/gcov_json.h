// Reader of the JSON that "gcov --json-format" writes.
//
// The text is fed in pieces and handed out one document at a time, one for each object file, so that memory
// is bounded by the largest document. Keys may stand in any order and unknown ones are skipped, which reads
// the versions 1 and 2 of the format alike. A fault of the input is reported to the caller, who knows whether
// it ends the run.
#pragma once

#include "import/gcc/gcov_document.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

class gcov_reader {
  public:
    /// `on_document` is called for each document when its last byte was fed; what it gets is valid during the
    /// call.
    explicit gcov_reader(std::function<void(const gcov_document&)> on_document);
    gcov_reader(const gcov_reader&) = delete;
    gcov_reader& operator=(const gcov_reader&) = delete;
    ~gcov_reader();

    /// Takes the next piece of the input. False when it is at fault; then nothing more may be fed.
    bool feed(std::string_view piece);

    /// The end of the input. False when it is empty or ends within a document.
    bool finish();

    /// Starts anew, with memory that is there already.
    void reset();

    /// What is wrong, to stand behind the name of the input.
    const std::string& fault() const;

  private:
    struct state;
    std::unique_ptr<state> state_;
};
