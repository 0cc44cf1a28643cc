#include "profile_tool/profile_merge.h"

#include "common/printable.h"
#include "common/remedy.h"
#include "common/scratch_file.h"

#include <algorithm>
#include <cerrno>
#include <utility>

bool profile_merge::fail(const std::string& what) {
    if (error_.empty())
        error_ = what;
    return false;
}

/// Runs are added up. The word and the text, which only the instrumentation knows, stay when they are the
/// same in all.
void profile_merge::add_header(const DPI_CURSOR& cursor) {
    newest_time_ = std::max(newest_time_, cursor.modified());
    if (!std::exchange(has_header_, true)) {
        runs_ = cursor.num_runs();
        header_word_ = cursor.header_word();
        header_text_ = cursor.header_text();
        return;
    }
    runs_ = cursor.num_runs() > UINT32_MAX - runs_ ? UINT32_MAX : runs_ + cursor.num_runs();
    if (header_word_ != cursor.header_word())
        header_word_ = 0;
    if (header_text_ != cursor.header_text())
        header_text_.clear();
}

bool profile_merge::open_profile(const std::string& path, std::uint32_t number, source_list* sources) {
    auto source = std::make_unique<merge_source>();
    if (!source->open(path, number, locked_))
        return fail(source->error());
    add_header(source->cursor());
    sources->push_back(std::move(source));
    return true;
}

/// Two records of one function do not agree.
bool profile_merge::refuse(const record_sum& sum, const merge_source& source) {
    const std::uint32_t here = source.origin().number;
    const std::uint32_t there = sum.origin().number;
    return fail("function " + printable(sum.function()) + " of " + printable(sum.file()) +
                " has other blocks in " + printable((*profiles_)[std::max(here, there)]) + " than in " +
                printable((*profiles_)[std::min(here, there)]) +
                "; -newest takes the counts of the profile that was changed last");
}

/// Adds the present record of a source to the first `*variants` sums.
bool profile_merge::take_record(merge_source& source, std::size_t* variants) {
    std::string error;
    const auto end = variants_.begin() + static_cast<std::ptrdiff_t>(*variants);
    const auto sum = std::find_if(variants_.begin(), end, [&](record_sum& s) { return s.agrees(source); });
    if (!source.error().empty())
        return fail(source.error());
    if (sum != end)
        return sum->add(source, &error) || fail(error);
    if (*variants == variants_.size())
        variants_.emplace_back();
    record_sum& added = variants_[*variants];
    if (!added.start(source, &error))
        return fail(error);
    if (*variants > 0 && !newest_)
        return refuse(variants_[0], source);
    ++*variants;
    return true;
}

/// All of them go into an intermediate profile, as one that is older so far may be joined by a newer one.
bool profile_merge::write_variants(std::size_t count, DPI_STREAM_WRITER& writer, bool is_last) {
    const auto end = variants_.begin() + static_cast<std::ptrdiff_t>(count);
    if (is_last)
        return std::min_element(variants_.begin(), end, record_sum::is_newer)->write(writer, false) ||
               fail(writer.error());
    for (auto sum = variants_.begin(); sum != end; ++sum)
        if (!sum->write(writer, true))
            return fail(writer.error());
    return true;
}

/// Merges the records of all sources. `is_last`: what is written is the sum, not an intermediate profile.
bool profile_merge::merge(const source_list& sources, DPI_STREAM_WRITER& writer, bool is_last) {
    const auto is_later = [](const merge_source* a, const merge_source* b) { return a->key() > b->key(); };
    std::vector<merge_source*> heap; // of the sources that have a record, the one with the lowest key first
    const auto advance = [&](merge_source* source) {
        if (!source->next())
            return source->error().empty() || fail(source->error());
        heap.push_back(source);
        std::push_heap(heap.begin(), heap.end(), is_later);
        return true;
    };
    for (const source_ptr& source : sources)
        if (!advance(source.get()))
            return false;
    while (!heap.empty()) {
        const std::string key(heap.front()->key());
        std::size_t variants = 0;
        while (!heap.empty() && heap.front()->key() == key) {
            std::pop_heap(heap.begin(), heap.end(), is_later);
            merge_source* const source = heap.back();
            heap.pop_back();
            if (!take_record(*source, &variants) || !advance(source))
                return false;
        }
        if (!write_variants(variants, writer, is_last))
            return false;
    }
    for (const source_ptr& source : sources)
        has_wide_ = has_wide_ || source->is_wide();
    return true;
}

bool profile_merge::fail_scratch(const char* what) {
    return fail(std::string("cannot ") + what + " a temporary file in " + printable(directory_) + ": " +
                reason_of(errno));
}

/// Merges sources into an intermediate profile, and closes them.
bool profile_merge::reduce(source_list* sources, file_ptr* result) {
    *result = open_scratch_file(directory_);
    if (!*result)
        return fail_scratch("create");
    DPI_STREAM_WRITER writer(directory_);
    if (!merge(*sources, writer, false) || !writer.write(result->get(), {}, PGOPTI_LAYOUT_64))
        return fail(writer.error());
    sources->clear();
    return rewind_scratch_file(result->get()) || fail_scratch("write");
}

bool profile_merge::open_intermediates(std::vector<file_ptr> streams, source_list* sources) {
    for (file_ptr& stream : streams) {
        sources->push_back(std::make_unique<merge_source>());
        if (!sources->back()->open_intermediate(std::move(stream)))
            return fail(sources->back()->error());
    }
    return true;
}

/// Merges sources into an intermediate profile of this level, and full levels into ones of the next.
bool profile_merge::add_intermediate(source_list sources, std::size_t level) {
    if (levels_.size() <= level)
        levels_.resize(level + 1);
    file_ptr stream;
    if (!reduce(&sources, &stream))
        return false;
    levels_[level].push_back(std::move(stream));
    source_list full;
    return levels_[level].size() < kWays || (open_intermediates(std::exchange(levels_[level], {}), &full) &&
                                             add_intermediate(std::move(full), level + 1));
}

/// Merges profiles of the command line into an intermediate one. The one before, where it is small beside
/// them, is merged with them at once: profiles of the same functions then take the room of one sum, not of
/// kWays.
bool profile_merge::add_profiles(source_list sources) {
    std::uint64_t size = 0;
    for (const source_ptr& source : sources)
        size += source->cursor().file_size();
    std::vector<file_ptr> before;
    if (!levels_.empty() && !levels_[0].empty() &&
        scratch_file_size(levels_[0].back().get()) <= size / kSmallShare) {
        before.push_back(std::move(levels_[0].back()));
        levels_[0].pop_back();
    }
    return open_intermediates(std::move(before), &sources) && add_intermediate(std::move(sources), 0);
}

/// Adds what waits on all levels to the sources, of which at most kWays are left then.
bool profile_merge::add_levels(source_list* sources) {
    for (std::vector<file_ptr>& level : levels_) {
        if (sources->size() + level.size() > kWays) {
            std::vector<file_ptr> stream(1);
            if (!reduce(sources, stream.data()) || !open_intermediates(std::move(stream), sources))
                return false;
        }
        if (!open_intermediates(std::exchange(level, {}), sources))
            return false;
    }
    return true;
}

bool profile_merge::collect_all() {
    source_list sources;
    for (const std::string& path : *profiles_) {
        if (sources.size() == kWays && !add_profiles(std::exchange(sources, {})))
            return false;
        if (!open_profile(path, static_cast<std::uint32_t>(&path - profiles_->data()), &sources))
            return false;
    }
    return add_levels(&sources) && (merge(sources, sum_, true) || fail(sum_.error()));
}

/// Takes the only profile, byte by byte: what a sum would refuse, such as fractions or records out of order,
/// a report of this one profile has an answer for.
bool profile_merge::copy_only() {
    DPI_CURSOR cursor;
    if (!cursor.open(profiles_->front(), locked_))
        return fail(cursor.error());
    newest_time_ = cursor.modified();
    while (cursor.next()) {
    }
    if (!cursor.error().empty())
        return fail(cursor.error());
    copy_ = open_scratch_file(directory_);
    if (!copy_)
        return fail_scratch("create");
    cursor.copy(copy_.get());
    return rewind_scratch_file(copy_.get()) || fail_scratch("write");
}

bool profile_merge::collect(const std::vector<std::string>& profiles, std::string* error) {
    profiles_ = &profiles;
    const bool done = profiles.size() == 1 ? copy_only() : collect_all();
    *error = error_;
    return done;
}

bool profile_merge::write_sum(std::FILE* out) {
    const PGOPTI_RECORD_LAYOUT& layout =
        has_wide_ || !sum_.fits_narrow() ? PGOPTI_LAYOUT_64 : PGOPTI_LAYOUT_32;
    return sum_.write(out, {runs_, 0, header_word_, header_text_}, layout) || fail(sum_.error());
}

bool profile_merge::write(std::FILE* out, std::string* error) {
    const bool done = copy_ ? copy_scratch_file(copy_.get(), out) || fail_scratch("read") : write_sum(out);
    *error = error_;
    return done;
}
