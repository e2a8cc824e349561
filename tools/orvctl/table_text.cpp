#include "tools/orvctl/table_text.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace orvctl {
namespace {

using Line = std::vector<std::string>;
using Widths = std::vector<size_t>;

constexpr size_t kWidest = 60;    // of a column
constexpr size_t kNarrowest = 8;  // of one that has to make room
constexpr size_t kGap = 2;
constexpr size_t kWrapAt = 120;
constexpr char kEllipsis[] = "\xE2\x80\xA6";

// Bytes of the longest beginning that is no wider.
size_t Fitting(std::string_view text, size_t width) {
  size_t end = 0;
  for (size_t next = 0, used = 0; end < text.size(); end = next) {
    next = end + 1;
    while (next < text.size() && (text[next] & 0xC0) == 0x80) ++next;
    used += DisplayWidth(text.substr(end, next - end));
    if (used > width) break;
  }
  return end;
}

std::string Shortened(const std::string& text, size_t width) {
  if (DisplayWidth(text) <= width) return text;
  return text.substr(0, Fitting(text, width - 1)) + kEllipsis;
}

// Lines of whole words, where a word is not too long for a line by itself.
std::vector<std::string> Wrapped(std::string_view text, size_t width) {
  std::vector<std::string> lines;
  while (DisplayWidth(text) > width) {
    const size_t most = std::max<size_t>(Fitting(text, width), 1);
    const size_t blank = text.rfind(' ', most);
    const bool isBetween = blank != std::string_view::npos && blank != 0;
    lines.emplace_back(text.substr(0, isBetween ? blank : most));
    text.remove_prefix(isBetween ? blank + 1 : most);
  }
  lines.emplace_back(text);
  return lines;
}

size_t Total(const Widths& widths) {
  return std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
}

}  // namespace

class Table {
 public:
  Table(const Listing& listing, size_t terminalWidth)
      : isTerminal_(terminalWidth != 0), wraps_(listing.wraps) {
    for (size_t i = 0; i < listing.columns.size(); ++i) {
      if (!listing.columns[i].title.empty()) shown_.push_back(i);
    }
    for (const size_t column : shown_) titles_.push_back(listing.columns[column].title);
    for (const auto& row : listing.rows) Take(row);
    Measure(wraps_ ? std::min(kWrapAt, isTerminal_ ? terminalWidth - 1 : kWrapAt) : terminalWidth);
  }

  std::string Text() {
    Append(titles_);
    Line rule;
    for (const size_t width : widths_) rule.emplace_back(width, '-');
    Append(rule);
    for (const Line& line : lines_) Append(line);
    return std::exchange(out_, {});
  }

  std::string One(const std::vector<Cell>& row) {
    lines_.clear();
    Take(row);
    Append(lines_.front());
    return std::exchange(out_, {});
  }

 private:
  void Take(const std::vector<Cell>& row) {
    Line line;
    for (const size_t column : shown_) line.push_back(Printable(row[column].text));
    lines_.push_back(std::move(line));
  }

  void Measure(size_t room) {
    for (size_t i = 0; i < titles_.size(); ++i) {
      size_t width = DisplayWidth(titles_[i]);
      for (const Line& line : lines_) width = std::max(width, DisplayWidth(line[i]));
      const bool isLast = i + 1 == titles_.size();
      widths_.push_back(wraps_ && isLast ? width : std::min(width, kWidest));
    }
    if (wraps_) return FitLast(room);
    // A terminal goes on in the next line once its last column is written.
    while (isTerminal_ && Total(widths_) >= room) {
      size_t& widest = *std::max_element(widths_.begin(), widths_.end());
      if (widest <= kNarrowest) return;
      --widest;
    }
  }

  void FitLast(size_t room) {
    const size_t others = Total(widths_) - widths_.back();
    widths_.back() = std::min(widths_.back(), room > others + kNarrowest ? room - others : kNarrowest);
  }

  void Append(const Line& line) {
    if (!wraps_) return AppendOne(line);
    Line next = line;
    for (const std::string& part : Wrapped(line.back(), widths_.back())) {
      next.back() = part;
      AppendOne(next);
      for (std::string& each : next) each.clear();
    }
  }

  // Blanks at its end are dropped.
  void AppendOne(const Line& line) {
    for (size_t i = 0; i < line.size(); ++i) {
      const std::string text = isTerminal_ ? Shortened(line[i], widths_[i]) : line[i];
      const size_t width = DisplayWidth(text);
      out_ += text;
      out_.append((widths_[i] > width ? widths_[i] - width : 0) + kGap, ' ');
    }
    out_.erase(out_.find_last_not_of(' ') + 1);
    out_ += '\n';
  }

  const bool isTerminal_;
  const bool wraps_;
  std::vector<size_t> shown_;
  Line titles_;
  std::vector<Line> lines_;
  Widths widths_;
  std::string out_;
};

std::string TableText(const Listing& listing, size_t terminalWidth) {
  return Table(listing, terminalWidth).Text();
}

GrowingTable::GrowingTable(const Listing& first, size_t terminalWidth)
    : table_(std::make_unique<Table>(first, terminalWidth)) {}
GrowingTable::~GrowingTable() = default;

std::string GrowingTable::Text() { return table_->Text(); }
std::string GrowingTable::Line(const std::vector<Cell>& row) { return table_->One(row); }

}  // namespace orvctl
