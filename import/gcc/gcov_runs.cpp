#include "import/gcc/gcov_runs.h"

#include "common/message.h"
#include "common/platform.h"
#include "common/progress_line.h"
#include "common/remedy.h"
#include "import/gcc/child_process.h"
#include "import/gcc/gcov_json.h"
#include "import/gcc/object_links.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <poll.h>
#include <utility>

constexpr std::size_t kMostTogether = 8;   ///< objects of one run: of each, gcov keeps some memory
constexpr std::size_t kFirstTogether = 2;  ///< of the first run, as nothing is known of the documents yet
constexpr std::size_t kMostHeld = 4 << 20; ///< bytes of documents that wait for the end of a run

namespace {

using clock = std::chrono::steady_clock;

/// Documents that are handed out together or not at all. Emptied, it keeps its memory for those that follow.
class held_documents {
  public:
    std::size_t number() const { return number_; }

    /// Bytes that all of them take, roughly.
    std::size_t size() const { return size_; }

    void add(const gcov_document& document) {
        if (number_ == documents_.size())
            documents_.emplace_back();
        documents_[number_++] = document;
        size_ += document.text.size() + document.functions.size() * sizeof(gcov_function) +
                 document.lines.size() * sizeof(gcov_line);
    }

    void hand_out(const std::function<void(const gcov_document&)>& on_document) {
        for (std::size_t i = 0; i < number_; ++i)
            on_document(documents_[i]);
        clear();
    }

    void clear() { number_ = size_ = 0; }

  private:
    std::vector<gcov_document> documents_;
    std::size_t number_ = 0;
    std::size_t size_ = 0;
};

/// A place for one run of gcov at a time.
struct job {
    job(std::size_t own_number, const std::function<void(const gcov_document&)>& on_document)
        : number(own_number), reader([this, &on_document](const gcov_document& document) {
              any_files = any_files || !document.files.empty();
              if (objects.size() == 1)
                  on_document(document);
              else if (held.number() <= objects.size()) // one too many shows that something is wrong
                  held.add(document);
          }) {}

    bool is_free() const { return objects.empty(); }

    const std::size_t number;               ///< among the jobs
    std::vector<const gcc_object*> objects; ///< empty: none are being read
    bool again = false;                     ///< the object was read with others before, in vain
    held_documents held;                    ///< of several objects
    bool complete = false;                  ///< what is held can be handed out; the objects are the next ones
    child_process child;
    gcov_reader reader;
    clock::time_point last_output; ///< or when it was started
    bool any_files = false;        ///< a document told of source files
    bool faulty = false;           ///< what gcov wrote cannot be read
    bool silent = false;           ///< it was ended since nothing came
};

class job_list {
  public:
    job_list(const std::vector<gcc_object>& objects, gcov_programs* programs, unsigned jobs,
             const std::string& prefix, const std::function<void(const gcov_document&)>& on_document,
             std::chrono::seconds patience)
        : objects_(objects), programs_(*programs), on_document_(on_document), patience_(patience),
          progress_("objects read", objects.size()) {
        if (!prefix.empty())
            arguments_.insert(arguments_.end(), {"--relative-only", "--source-prefix", prefix});
        const std::size_t number = std::min<std::size_t>(std::max(jobs, 1U), objects.size());
        for (std::size_t i = 0; i < number; ++i)
            jobs_.push_back(std::make_unique<job>(i, on_document));
    }

    gcov_troubles run();

  private:
    bool all_started() const { return next_ == objects_.size() && again_.empty(); }
    std::vector<const gcc_object*> next_objects();
    void start_jobs();
    bool start(job* free);
    void hand_out();
    void wait_for_output();
    void take_output(job* running);
    void end(job* running);
    void judge(const gcc_object& object, const job& ended, child_end how, bool complete);
    void adapt(const job& ended, bool fine);

    const std::vector<gcc_object>& objects_;
    gcov_programs& programs_;
    const std::function<void(const gcov_document&)>& on_document_;
    std::chrono::seconds patience_;
    std::vector<std::string> arguments_ = {"--json-format", "--stdout"};
    std::vector<std::unique_ptr<job>> jobs_;
    std::size_t next_ = 0;                 ///< object to start
    std::vector<const gcc_object*> again_; ///< to start one by one
    std::size_t together_ = kFirstTogether;
    std::size_t running_ = 0; ///< jobs that have objects
    object_links links_;
    progress_line progress_;
    gcov_troubles troubles_;
};

/// What the next run reads; all jobs get a part of what is left.
std::vector<const gcc_object*> job_list::next_objects() {
    if (!again_.empty())
        return {again_.back()};
    const std::size_t left = objects_.size() - next_;
    const std::size_t most = jobs_.size() == 1 ? left : left / (2 * jobs_.size());
    const std::size_t number = std::max<std::size_t>(std::min(together_, most), 1);
    std::vector<const gcc_object*> result;
    for (std::size_t i = next_; i < next_ + number; ++i) {
        if (programs_.program_for(objects_[i]) != programs_.program_for(objects_[next_]))
            break;
        result.push_back(&objects_[i]);
    }
    return result;
}

/// False when there is no room for one more process; then it is tried again when another one has ended.
bool job_list::start(job* free) {
    const std::vector<const gcc_object*> objects = next_objects();
    const std::string& program = programs_.program_for(*objects.front());
    std::vector<std::string> arguments = arguments_;
    for (std::size_t i = 0; i < objects.size(); ++i)
        arguments.push_back(links_.name_for(*objects[i], free->number * kMostTogether + i));
    const int error = free->child.start(program, arguments);
    if (error != 0) {
        for (std::size_t i = 0; i < objects.size(); ++i)
            links_.release(free->number * kMostTogether + i);
        if (running_ == 0 || (error != EAGAIN && error != EMFILE && error != ENFILE && error != ENOMEM))
            end_with_error("cannot run %s: %s; -gcov names another", printable(program).c_str(),
                           std::strerror(error));
        return false;
    }
    free->objects = objects;
    free->again = !again_.empty();
    free->any_files = free->faulty = free->silent = false;
    free->reader.reset();
    free->last_output = clock::now();
    if (free->again)
        again_.pop_back();
    else
        next_ += objects.size();
    ++running_;
    return true;
}

void job_list::start_jobs() {
    for (const std::unique_ptr<job>& each : jobs_) {
        if (!all_started() && each->is_free() && !start(each.get()))
            return;
    }
}

/// Takes note of how gcov ended that read one object. One whose object has no functions writes no files and
/// is content.
void job_list::judge(const gcc_object& object, const job& ended, child_end how, bool complete) {
    std::string reason;
    if (ended.silent)
        reason = "gcov did not come to an end";
    else if (how.signal != 0 && !ended.faulty)
        reason = "gcov was ended by signal " + std::to_string(how.signal);
    else if (!complete)
        reason = "what gcov wrote " + ended.reader.fault();
    else if (!ended.any_files && how.status != 0)
        reason = "gcov knows nothing of it, exit status " + std::to_string(how.status);
    if (!reason.empty())
        troubles_.unreadable.push_back(object.notes + ": " + reason);
    else if (how.status != 0 && !object.counters.empty())
        troubles_.damaged.push_back(object.counters);
}

/// Decides how many objects the next runs get: fewer where some are at fault, or their documents large.
void job_list::adapt(const job& ended, bool fine) {
    together_ = fine ? std::min(together_ * 2, kMostTogether) : std::max<std::size_t>(together_ / 4, 1);
    const std::size_t number = std::max<std::size_t>(ended.held.number(), 1);
    while (together_ > 1 && ended.held.size() / number * together_ > kMostHeld)
        together_ /= 2;
}

/// The documents of several objects, if they were all well, are still to be handed out.
void job_list::end(job* running) {
    const child_end how = running->child.finish();
    const std::vector<const gcc_object*> objects = std::move(running->objects);
    running->objects.clear();
    --running_;
    for (std::size_t i = 0; i < objects.size(); ++i)
        links_.release(running->number * kMostTogether + i);
    const bool complete = !running->faulty && running->reader.finish();
    const bool fine = complete && !running->silent && how.signal == 0 && how.status == 0 &&
                      (objects.size() == 1 || running->held.number() == objects.size());
    if (!running->again)
        adapt(*running, fine);
    if (!fine && objects.size() > 1) {
        running->held.clear();
        again_.insert(again_.end(), objects.begin(), objects.end());
        return;
    }
    if (objects.size() == 1)
        judge(*objects.front(), *running, how, complete);
    running->complete = objects.size() != 1;
    for (std::size_t i = 0; i < objects.size(); ++i)
        progress_.step();
}

void job_list::take_output(job* running) {
    running->last_output = clock::now();
    const std::string_view piece = running->child.read();
    if (piece.empty())
        return end(running);
    const bool fine = running->reader.feed(piece);
    if (!fine || running->held.number() > running->objects.size()) {
        running->faulty = true;
        running->child.stop();
        end(running);
    }
}

void job_list::wait_for_output() {
    std::vector<pollfd> descriptors;
    std::vector<job*> waiting;
    for (const std::unique_ptr<job>& each : jobs_) {
        if (each->is_free())
            continue;
        descriptors.push_back({each->child.output(), POLLIN, 0});
        waiting.push_back(each.get());
    }
    if (poll(descriptors.data(), descriptors.size(), 1000) < 0 && errno != EINTR)
        end_with_error("cannot wait for gcov: %s", reason_of(errno).c_str());
    const clock::time_point now = clock::now();
    for (std::size_t i = 0; i < waiting.size(); ++i) {
        if (descriptors[i].revents != 0) {
            take_output(waiting[i]);
        } else if (now - waiting[i]->last_output > patience_) {
            waiting[i]->silent = true;
            waiting[i]->child.stop();
            end(waiting[i]);
        }
    }
}

void job_list::hand_out() {
    for (const std::unique_ptr<job>& each : jobs_) {
        if (each->complete)
            each->held.hand_out(on_document_);
        each->complete = false;
    }
}

gcov_troubles job_list::run() {
    while (!all_started() || running_ != 0) {
        start_jobs(); // before the documents are handed out, which takes a while
        hand_out();
        wait_for_output();
    }
    hand_out();
    return std::move(troubles_);
}

} // namespace

gcov_troubles run_gcov(const std::vector<gcc_object>& objects, gcov_programs* programs, unsigned jobs,
                       const std::string& prefix,
                       const std::function<void(const gcov_document&)>& on_document,
                       std::chrono::seconds patience) {
    for (const gcc_object& object : objects) // before anything is read
        programs->program_for(object);
    return job_list(objects, programs, jobs, prefix, on_document, patience).run();
}

unsigned default_jobs() {
    return std::min(usable_processors(), kMostJobs);
}
