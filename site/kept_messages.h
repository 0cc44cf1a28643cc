// What a run says on standard error, kept for the start page. It is written there as ever.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

/// Messages of a run that ended well: all of them warn of something.
struct run_warnings {
    std::vector<std::string> first; ///< at most kMostWarnings, each in one line
    std::size_t more = 0;           ///< how many came behind those
};

constexpr std::size_t kMostWarnings = 20;

/// Keeps the messages as long as it lives, where the system lets them be watched (common/platform). One that
/// comes again is kept once; that a source is not there is left out, as the totals of a walk tell it.
class kept_messages {
  public:
    kept_messages();
    kept_messages(const kept_messages&) = delete;
    kept_messages& operator=(const kept_messages&) = delete;
    ~kept_messages();

    /// Ends the run when there was no memory for them.
    const run_warnings& warnings() const;

  private:
    static void take(void* self, const char* bytes, std::size_t size) noexcept;
    void add(std::string_view bytes);
    void finish();

    std::string message_; ///< what came of the message at hand, as far as it is kept
    bool lacks_memory_ = false;
    std::unordered_set<std::size_t> known_; ///< hashes of those that came
    run_warnings warnings_;
};
