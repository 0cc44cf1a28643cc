#include "import/clang/function_mapping.h"

#include "import/source_region.h"

#include <algorithm>
#include <limits>

namespace {

/// Low bits of a counter.
enum counter_tag : std::uint64_t { kZero = 0, kProfile = 1, kDifference = 2, kSum = 3 };

/// The part of a head above its low 3 bits, when those are 0.
enum head_kind : std::uint64_t {
    kZeroCode = 0,
    kSkipped = 2,
    kBranch = 4,
    kDecision = 5,
    kDecisionBranch = 6
};

/// Kinds of the export; those from kLeftOut on are not handed out.
enum export_kind : std::int64_t { kCode = 0, kExpansion = 1, kSkippedCode = 2, kGap = 3, kLeftOut = 4 };

} // namespace

constexpr std::uint64_t kGapBit = std::uint64_t{1} << 31;
constexpr std::uint64_t kLargestNumber = 0xffffffff; ///< of a line or column

[[noreturn]] static void damaged(const char* what) {
    throw input_error(std::string("has damaged coverage mapping: ") + what);
}

static std::int64_t line_or_column(std::uint64_t value) {
    if (value > kLargestNumber)
        damaged("a line or column is too large");
    return static_cast<std::int64_t>(value);
}

void read_mapping_files(std::string_view mapping, mapping_files* files) {
    byte_reader reader(mapping);
    files->indices.resize(reader.count());
    for (std::uint64_t& index : files->indices)
        index = reader.leb();
    files->end = reader.offset();
}

bool is_unused_function(std::string_view mapping, const mapping_files& files) {
    byte_reader reader(mapping.substr(files.end));
    return files.indices.size() == 1 && reader.leb() == 0 && reader.leb() == 1 && (reader.leb() & 3) == kZero;
}

std::uint64_t mapping_decoder::checked_counter(std::uint64_t counter) {
    const std::uint64_t index = counter >> 2;
    switch (counter & 3) {
    case kZero:
        break;
    case kProfile:
        needed_ = std::max(needed_, index + 1);
        break;
    default:
        if (index >= expressions_.size())
            damaged("an expression is missing");
    }
    return counter;
}

void mapping_decoder::decode_expressions(byte_reader* reader) {
    expressions_.resize(reader->count());
    for (expression& each : expressions_) {
        each.left = checked_counter(reader->leb());
        each.right = checked_counter(reader->leb());
    }
    if (counters_.data)
        memos_.assign(expressions_.size() * 2, {0, progress::unknown});
}

/// Reads what a head that is no counter has behind it, and returns the region's counter.
std::uint64_t mapping_decoder::decode_head(std::uint64_t head, byte_reader* reader, export_region* region) {
    if ((head & 4) != 0) {
        if (head >> 3 >= first_.size())
            damaged("a file number is too large");
        (*region)[kKind] = kExpansion;
        (*region)[kExpandedFileID] = static_cast<std::int64_t>(head >> 3);
        return kZero;
    }
    std::uint64_t counter = kZero;
    switch (head >> 3) {
    case kZeroCode:
        break;
    case kSkipped:
        (*region)[kKind] = kSkippedCode;
        break;
    case kBranch:
    case kDecisionBranch:
        (*region)[kKind] = kLeftOut;
        counter = reader->leb();
        checked_counter(reader->leb());
        for (int ids = head >> 3 == kBranch ? 0 : 3; ids > 0; --ids)
            reader->leb();
        break;
    case kDecision:
        (*region)[kKind] = kLeftOut;
        reader->leb();
        reader->leb();
        break;
    default:
        damaged("a region is of an unknown kind");
    }
    return counter;
}

/// The counters stand in the place of the counts until all regions are known.
void mapping_decoder::decode_regions(byte_reader* reader, std::size_t file,
                                     std::vector<export_region>* regions) {
    std::uint64_t line = 0;
    const std::size_t number = reader->count();
    for (std::size_t i = 0; i < number; ++i) {
        export_region& region = regions->emplace_back();
        const std::uint64_t head = reader->leb();
        const std::uint64_t counter =
            checked_counter((head & 3) != kZero ? head : decode_head(head, reader, &region));
        line += static_cast<std::uint64_t>(line_or_column(reader->leb()));
        region[kLineStart] = line_or_column(line);
        region[kColumnStart] = line_or_column(reader->leb());
        const std::int64_t lines = line_or_column(reader->leb());
        region[kLineEnd] = line_or_column(line + static_cast<std::uint64_t>(lines));
        std::uint64_t end = reader->leb();
        if (end <= kLargestNumber && (end & kGapBit) != 0) {
            region[kKind] = kGap;
            end -= kGapBit;
        }
        region[kColumnEnd] = line_or_column(end);
        if (region[kColumnStart] == 0 && end == 0) { // whole lines
            region[kColumnStart] = 1;
            region[kColumnEnd] = kLargestColumn;
        }
        if (lines == 0 && region[kColumnEnd] < region[kColumnStart])
            damaged("a region ends before its start");
        region[kFileID] = static_cast<std::int64_t>(file);
        region[kExecutionCount] = static_cast<std::int64_t>(counter);
        if (i == 0)
            first_[file] = {counter, region[kKind] == kExpansion
                                         ? static_cast<std::size_t>(region[kExpandedFileID])
                                         : kNowhere};
        if (region[kKind] >= kLeftOut)
            regions->pop_back();
    }
}

/// The value when it needs no evaluation.
std::optional<std::int64_t> mapping_decoder::known_value(std::uint64_t counter) {
    switch (counter & 3) {
    case kZero:
        return 0;
    case kProfile:
        return static_cast<std::int64_t>(std::min(counters_.data[counter >> 2], kLargestCount));
    default:
        const memo* const of = memo_of(counter);
        return of->state == progress::known ? std::optional(of->value) : std::nullopt;
    }
}

/// Sums and differences stay at the limits of 64 bits.
static std::int64_t combine(std::int64_t left, std::int64_t right, bool sum) {
    std::int64_t result = 0;
    if (sum ? __builtin_add_overflow(left, right, &result) : __builtin_sub_overflow(left, right, &result))
        return left < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
    return result;
}

/// Without recursion: expressions refer to each other in any order, as deep as a file likes.
std::int64_t mapping_decoder::evaluate(std::uint64_t counter) {
    if (const std::optional<std::int64_t> known = known_value(counter))
        return *known;
    pending_.assign(1, counter);
    while (!pending_.empty()) {
        const std::uint64_t current = pending_.back();
        memo* const own = memo_of(current);
        const expression& operands = expressions_[static_cast<std::size_t>(current >> 2)];
        bool complete = true;
        for (const std::uint64_t operand : {operands.left, operands.right}) {
            if (own->state == progress::known || known_value(operand))
                continue;
            if (memo_of(operand)->state == progress::begun || operand == current)
                damaged("an expression refers to itself");
            pending_.push_back(operand);
            complete = false;
        }
        if (own->state == progress::unknown)
            own->state = progress::begun;
        if (!complete)
            continue;
        if (own->state != progress::known) {
            own->value =
                combine(*known_value(operands.left), *known_value(operands.right), (current & 3) == kSum);
            own->state = progress::known;
        }
        pending_.pop_back();
    }
    return memo_of(counter)->value;
}

/// A race between threads, or counters that were set back in the middle of a run, can leave less than
/// nothing.
std::int64_t mapping_decoder::count_of_counter(std::uint64_t counter) {
    if (!counters_.data || (counter & 3) == kZero)
        return 0;
    if ((counter & 3) == kProfile)
        return *known_value(counter);
    return std::max<std::int64_t>(evaluate(counter), 0);
}

/// The count of the first region of a file number, which may be an expansion, too. Those on the way get the
/// result.
std::int64_t mapping_decoder::count_of_file(std::size_t file) {
    way_.clear();
    std::size_t at = file;
    while (first_[at].leads_to != kNowhere) {
        if (way_.size() > first_.size())
            damaged("an expansion leads to itself");
        way_.push_back(at);
        at = first_[at].leads_to;
    }
    for (const std::size_t passed : way_)
        first_[passed] = first_[at];
    return count_of_counter(first_[at].counter);
}

bool mapping_decoder::decode(std::string_view mapping, std::size_t files, const function_counters& counters,
                             export_function* function) {
    counters_ = counters;
    needed_ = 0;
    first_.assign(files, {kZero, kNowhere});
    function->regions.clear();
    byte_reader reader(mapping);
    decode_expressions(&reader);
    for (std::size_t file = 0; file < files; ++file)
        decode_regions(&reader, file, &function->regions);
    if (!reader.empty())
        damaged("bytes are left over");
    if (counters.data && needed_ > counters.size)
        return false;
    for (export_region& region : function->regions) {
        region[kExecutionCount] = region[kKind] == kExpansion
                                      ? count_of_file(static_cast<std::size_t>(region[kExpandedFileID]))
                                      : count_of_counter(static_cast<std::uint64_t>(region[kExecutionCount]));
    }
    function->count = function->regions.empty() ? 0 : function->regions.front()[kExecutionCount];
    return true;
}
