#include "import/gcc/gcov_runs.h"

#include "common/message.h"
#include "common/platform.h"
#include "common/progress_line.h"
#include "import/gcc/child_process.h"
#include "import/gcc/gcov_json.h"
#include "import/gcc/object_links.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <poll.h>
#include <utility>

namespace {

using clock = std::chrono::steady_clock;

/// A place for one run of gcov at a time.
struct job {
    job(std::size_t own_number, const std::function<void(const gcov_document&)>& on_document)
        : number(own_number), reader([this, &on_document](const gcov_document& document) {
              any_files = any_files || !document.files.empty();
              on_document(document);
          }) {}

    const std::size_t number;           ///< among the jobs
    const gcc_object* object = nullptr; ///< null: none is being read
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
        : objects_(objects), programs_(*programs), patience_(patience),
          progress_("objects read", objects.size()) {
        if (!prefix.empty())
            arguments_.insert(arguments_.end(), {"--relative-only", "--source-prefix", prefix});
        arguments_.emplace_back(); // the object
        const std::size_t number = std::min<std::size_t>(std::max(jobs, 1U), objects.size());
        for (std::size_t i = 0; i < number; ++i)
            jobs_.push_back(std::make_unique<job>(i, on_document));
    }

    gcov_troubles run();

  private:
    void start_jobs();
    bool start(job* free);
    void wait_for_output();
    void take_output(job* running);
    void end(job* running);

    const std::vector<gcc_object>& objects_;
    gcov_programs& programs_;
    std::chrono::seconds patience_;
    std::vector<std::string> arguments_ = {"--json-format", "--stdout"};
    std::vector<std::unique_ptr<job>> jobs_;
    std::size_t next_ = 0;    ///< object to start
    std::size_t running_ = 0; ///< jobs that have one
    object_links links_;
    progress_line progress_;
    gcov_troubles troubles_;
};

/// False when there is no room for one more process; then it is tried again when another one has ended.
bool job_list::start(job* free) {
    const gcc_object& object = objects_[next_];
    const std::string& program = programs_.program_for(object);
    arguments_.back() = links_.name_for(object, free->number);
    const int error = free->child.start(program, arguments_);
    if (error != 0) {
        links_.release(free->number);
        if (running_ == 0 || (error != EAGAIN && error != EMFILE && error != ENFILE && error != ENOMEM))
            end_with_error("cannot run %s: %s; -gcov names another", printable(program).c_str(),
                           std::strerror(error));
        return false;
    }
    free->object = &object;
    free->any_files = free->faulty = free->silent = false;
    free->reader.reset();
    free->last_output = clock::now();
    ++next_;
    ++running_;
    return true;
}

void job_list::start_jobs() {
    for (const std::unique_ptr<job>& each : jobs_) {
        if (next_ < objects_.size() && !each->object && !start(each.get()))
            return;
    }
}

/// Takes note of how gcov ended. One whose object has no functions writes no files and is content.
void job_list::end(job* running) {
    const child_end how = running->child.finish();
    const gcc_object& object = *running->object;
    running->object = nullptr;
    --running_;
    progress_.step();
    links_.release(running->number);
    std::string reason;
    if (running->silent)
        reason = "gcov did not come to an end";
    else if (how.signal != 0 && !running->faulty)
        reason = "gcov was ended by signal " + std::to_string(how.signal);
    else if (running->faulty || !running->reader.finish())
        reason = "what gcov wrote " + running->reader.fault();
    else if (!running->any_files && how.status != 0)
        reason = "gcov knows nothing of it, exit status " + std::to_string(how.status);
    if (!reason.empty())
        troubles_.unreadable.push_back(object.notes + ": " + reason);
    else if (how.status != 0 && !object.counters.empty())
        troubles_.damaged.push_back(object.counters);
}

void job_list::take_output(job* running) {
    running->last_output = clock::now();
    const std::string_view piece = running->child.read();
    if (piece.empty())
        return end(running);
    if (!running->reader.feed(piece)) {
        running->faulty = true;
        running->child.stop();
        end(running);
    }
}

void job_list::wait_for_output() {
    std::vector<pollfd> descriptors;
    std::vector<job*> waiting;
    for (const std::unique_ptr<job>& each : jobs_) {
        if (!each->object)
            continue;
        descriptors.push_back({each->child.output(), POLLIN, 0});
        waiting.push_back(each.get());
    }
    if (poll(descriptors.data(), descriptors.size(), 1000) < 0 && errno != EINTR)
        end_with_error("cannot wait for gcov: %s", std::strerror(errno));
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

gcov_troubles job_list::run() {
    while (next_ < objects_.size() || running_ != 0) {
        start_jobs();
        wait_for_output();
    }
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
