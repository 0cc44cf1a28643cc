#include "site/treemap.h"

#include "site/html_text.h"
#include "site/rectangle.h"
#include "site/site_page.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

constexpr double kWidth = 1000;
constexpr double kHeight = 420;
constexpr double kLabelHeight = 17;
constexpr double kLeastLabelWidth = 40;
constexpr double kCharacterWidth = 6.6;
constexpr double kLeastArea = 60; ///< of what is shown by itself
constexpr std::size_t kMostLinkedFiles = 200;
constexpr std::size_t kMostLinks = 400; ///< of directories
constexpr int kSteps = 8;
constexpr int kLightSteps = 3; ///< the first of them have dark colours

int coverage_step(const covered_count& count) {
    if (count.total == 0)
        return 7;
    const double share = static_cast<double>(count.covered) / static_cast<double>(count.total);
    static const double limits[] = {0.2, 0.4, 0.6, 0.8, 0.9};
    const auto step = std::upper_bound(std::begin(limits), std::end(limits), share) - std::begin(limits);
    return count.covered == count.total ? 6 : static_cast<int>(step);
}

namespace {

enum class part_kind { directory, file, rest };

/// A directory or file within the one that is divided, or what of it is too small to be seen.
struct part {
    covered_count blocks;
    part_kind kind;
    std::uint32_t index; ///< of the directory or file
};

class treemap_writer {
  public:
    treemap_writer(text_buffer& out, const site_model& model, std::uint32_t top, std::string_view up)
        : out_(out), model_(model), up_(up),
          links_files_(static_cast<std::size_t>(model.directories[top].files.total) <= kMostLinkedFiles) {}

    void write(std::uint32_t top) {
        divide(top, {0, 0, kWidth, kHeight});
        for (std::size_t step = 0; step < cells_.size(); ++step) {
            if (cells_[step].empty())
                continue;
            out_.put("<path class=c");
            out_.put_number(step);
            out_.put(" d=\"");
            out_.put(cells_[step]);
            out_.put("\"/>");
        }
        out_.put(links_);
    }

  private:
    std::vector<part> parts_of(const site_directory& directory, double area) const;
    void divide(std::uint32_t index, const rectangle& area);
    void place(const part& which, const rectangle& area);
    void place_directory(std::uint32_t index, rectangle area);
    void add_cell(const covered_count& blocks, const rectangle& area);
    void add_link(const std::string& page, std::string_view name, const covered_count& blocks,
                  const rectangle& area, bool with_label);

    void add_label(std::string_view name, const rectangle& area, const char* element);

    text_buffer& out_;
    const site_model& model_;
    std::string_view up_;
    bool links_files_;
    std::size_t directory_links_ = 0;
    std::uint32_t within_ = 0;              ///< directory that is being divided
    std::array<std::string, kSteps> cells_; ///< paths, by colour
    std::string links_;                     ///< what lies above them
};

} // namespace

/// With one decimal, which is a tenth of a pixel.
static void append_number(std::string& text, double value) {
    const long tenths = std::lround(value * 10);
    text += std::to_string(tenths / 10);
    if (tenths % 10 != 0) {
        text += '.';
        text += std::to_string(tenths % 10);
    }
}

static bool is_larger(const part& a, const part& b) {
    return a.blocks.total > b.blocks.total;
}

/// Joins the parts that would be too small on `area`, of those that are sorted.
static void join_small(std::vector<part>& parts, std::int64_t blocks, double area) {
    const auto least = static_cast<std::int64_t>(kLeastArea / area * static_cast<double>(blocks));
    const auto small =
        std::find_if(parts.begin(), parts.end(), [&](const part& each) { return each.blocks.total < least; });
    if (parts.end() - small < 2)
        return;
    part rest = {{}, part_kind::rest, 0};
    for (auto each = small; each != parts.end(); ++each) {
        rest.blocks.total += each->blocks.total;
        rest.blocks.covered += each->blocks.covered;
    }
    parts.erase(small, parts.end());
    parts.insert(std::upper_bound(parts.begin(), parts.end(), rest, is_larger), rest);
}

/// The parts of a directory that have blocks, the largest first.
std::vector<part> treemap_writer::parts_of(const site_directory& directory, double area) const {
    std::vector<part> parts;
    const auto add = [&](const covered_count& blocks, part_kind kind, std::uint32_t index) {
        if (blocks.total > 0)
            parts.push_back({blocks, kind, index});
    };
    for (const std::uint32_t index : directory.directories)
        add(model_.directories[index].figures.blocks, part_kind::directory, index);
    for (const std::uint32_t index : directory.own_files)
        add(model_.files[index].figures.blocks, part_kind::file, index);
    std::stable_sort(parts.begin(), parts.end(), is_larger);
    join_small(parts, directory.figures.blocks.total, area);
    return parts;
}

void treemap_writer::add_cell(const covered_count& blocks, const rectangle& area) {
    // The gap between cells is part of them.
    const double gap = std::min(area.width, area.height) > 4 ? 1 : 0;
    std::string& path = cells_[static_cast<std::size_t>(coverage_step(blocks))];
    path += 'M';
    append_number(path, area.x);
    path += ' ';
    append_number(path, area.y);
    path += 'h';
    append_number(path, area.width - gap);
    path += 'v';
    append_number(path, area.height - gap);
    path += 'H';
    append_number(path, area.x);
    path += 'z';
}

/// A link over an area: the label of a directory, or a whole cell with the name of its file where that fits.
void treemap_writer::add_link(const std::string& page, std::string_view name, const covered_count& blocks,
                              const rectangle& area, bool with_label) {
    const std::string shown = html_name(name);
    links_ += "<a href=\"";
    links_.append(up_).append(page);
    links_ += with_label ? "\" class=d><title>" : "\" class=k><title>";
    links_ += shown + " " + percent_of(blocks) + " %, " + std::to_string(blocks.total - blocks.covered) +
              " of " + std::to_string(blocks.total) + "</title><rect x=\"";
    append_number(links_, area.x);
    links_ += "\" y=\"";
    append_number(links_, area.y);
    links_ += "\" width=\"";
    append_number(links_, std::max(area.width - 1, 0.0));
    links_ += "\" height=\"";
    append_number(links_, std::max(with_label ? kLabelHeight - 1 : area.height - 1, 0.0));
    links_ += "\"/>";
    if (with_label)
        add_label(name, area, "<text x=\"");
    else if (area.width > kLeastLabelWidth && area.height > kLabelHeight)
        add_label(name, area,
                  coverage_step(blocks) < kLightSteps ? "<text class=w x=\"" : "<text class=b x=\"");
    links_ += "</a>";
}

void treemap_writer::add_label(std::string_view name, const rectangle& area, const char* element) {
    links_ += element;
    append_number(links_, area.x + 4);
    links_ += "\" y=\"";
    append_number(links_, area.y + 12);
    const auto fitting = static_cast<std::size_t>((area.width - 14) / kCharacterWidth);
    links_ += "\">" + html_name(name, fitting, name_cut::back) + "</text>";
}

void treemap_writer::place_directory(std::uint32_t index, rectangle area) {
    const site_directory& directory = model_.directories[index];
    if (area.area() < kLeastArea)
        return add_cell(directory.figures.blocks, area);
    const bool with_label =
        area.width > kLeastLabelWidth && area.height > 2 * kLabelHeight && directory_links_ < kMostLinks;
    if (with_label) {
        ++directory_links_;
        add_link(directory.page, name_within(directory.path, model_.directories[within_].path),
                 directory.figures.blocks, area, true);
        area.y += kLabelHeight;
        area.height -= kLabelHeight;
    }
    // A frame tells neighbours apart, and makes the division end however deep directories are.
    const double frame = std::min(area.width, area.height) > 12 ? 2 : 0.5;
    area.width -= frame;
    area.height -= frame;
    if (area.width <= 1 || area.height <= 1)
        return;
    divide(index, area);
}

void treemap_writer::place(const part& which, const rectangle& area) {
    if (which.kind == part_kind::directory)
        return place_directory(which.index, area);
    add_cell(which.blocks, area);
    if (which.kind == part_kind::rest || !links_files_ || area.area() < kLeastArea)
        return;
    const site_file_entry& file = model_.files[which.index];
    add_link(file.page, name_within(file.name, model_.directories[within_].path), which.blocks, area, false);
}

void treemap_writer::divide(std::uint32_t index, const rectangle& area) {
    const std::vector<part> parts = parts_of(model_.directories[index], area.area());
    std::vector<double> weights;
    weights.reserve(parts.size());
    for (const part& each : parts)
        weights.push_back(static_cast<double>(each.blocks.total));
    divide_rectangle(area, weights, [&](std::size_t i, const rectangle& cell) {
        within_ = index;
        place(parts[i], cell);
    });
}

void put_treemap(text_buffer& out, const site_model& model, std::uint32_t directory, std::string_view up) {
    const covered_count& blocks = model.directories[directory].figures.blocks;
    if (blocks.total == 0)
        return;
    out.put("<svg class=map viewBox=\"0 0 1000 420\" role=group aria-label=\"Blocks by directory and "
            "coverage\">");
    treemap_writer(out, model, directory, up).write(directory);
    out.put("</svg>");
}
