#include "site/kept_messages.h"

#include "common/fatal.h"
#include "common/platform.h"

#include <algorithm>
#include <functional>
#include <new>

constexpr std::size_t kLongestMessage = 2000; ///< bytes that are kept

kept_messages::kept_messages() {
    lacks_memory_ = !watch_standard_error(take, this);
}

kept_messages::~kept_messages() {
    watch_standard_error(nullptr, nullptr);
}

const run_warnings& kept_messages::warnings() const {
    if (lacks_memory_)
        pgt_OutOfMemory();
    return warnings_;
}

void kept_messages::take(void* self, const char* bytes, std::size_t size) noexcept {
    auto* const messages = static_cast<kept_messages*>(self);
    try {
        messages->add({bytes, size});
    } catch (const std::bad_alloc&) {
        messages->lacks_memory_ = true;
    }
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
    constexpr std::string_view kBegin = "vexcov-site: warning: ";
    if (message.starts_with(kBegin))
        message.erase(0, kBegin.size());
    if (message.starts_with("there is no source file "))
        return;
    if (!known_.insert(std::hash<std::string>()(message)).second)
        return;
    if (warnings_.first.size() < kMostWarnings)
        warnings_.first.push_back(std::move(message));
    else
        ++warnings_.more;
}
