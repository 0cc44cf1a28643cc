#include "site/kept_messages.h"

#include "common/fatal.h"

#include <algorithm>
#include <functional>
#include <new>

constexpr std::size_t kLongestMessage = 2000; ///< bytes that are kept

kept_messages::kept_messages() : errors_(stderr) {
    cookie_io_functions_t functions = {};
    functions.write = take;
    replaced_ = fopencookie(this, "w", functions);
    if (!replaced_)
        throw std::bad_alloc();
    // Nothing waits in it: messages keep their order among those of others, and survive whatever ends the
    // run.
    std::setvbuf(replaced_, nullptr, _IONBF, 0);
    stderr = replaced_;
}

kept_messages::~kept_messages() {
    stderr = errors_;
    std::fclose(replaced_);
}

ssize_t kept_messages::take(void* self, const char* bytes, std::size_t size) {
    auto* const messages = static_cast<kept_messages*>(self);
    std::fwrite(bytes, 1, size, messages->errors_); // the end of the run finds what was lost
    try {
        messages->add({bytes, size});
    } catch (const std::bad_alloc&) {
        pgt_OutOfMemory();
    }
    return static_cast<ssize_t>(size);
}

void kept_messages::add(std::string_view bytes) {
    message_ += bytes.substr(0, kLongestMessage - std::min(message_.size(), kLongestMessage));
    if (bytes.ends_with('\n'))
        finish();
}

/// The message is complete.
void kept_messages::finish() {
    std::string message;
    message.swap(message_);
    while (message.ends_with('\n'))
        message.pop_back();
    std::replace(message.begin(), message.end(), '\n', ' ');
    if (message.starts_with("Warning - File ") && message.ends_with(" not found!"))
        return;
    if (message.starts_with("...")) { // goes on with the one before
        if (last_kept_)
            warnings_.first.back().append(" ").append(message);
        last_kept_ = false;
        return;
    }
    const bool is_new = known_.insert(std::hash<std::string>()(message)).second;
    last_kept_ = is_new && warnings_.first.size() < kMostWarnings;
    if (last_kept_)
        warnings_.first.push_back(std::move(message));
    else if (is_new)
        ++warnings_.more;
}
