// What is done to each line by itself: trimming and cutting.
//
// The library does both on text that it has widened or folded, which could not be undone: here it
// is given stand-ins instead, from whose fate that of the real characters is told.

#include <array>
#include <vector>

#include "bytes.h"
#include "stage.h"

namespace cli {
namespace {

// A carriage return before the line feed belongs to the line end.
std::string_view withoutCarriageReturn(std::string_view line) {
  return !line.empty() && line.back() == '\r' ? line.substr(0, line.size() - 1) : line;
}

// trimgPunc judges a character by its class alone. The characters of a class are numbered through,
// by 256 codes of that class, which gives the last eight bits of the number of each one that is
// left; a line with more of them is trimmed again with the next eight bits.
class StandIns {
 public:
  static constexpr unsigned kBits = 8;

  StandIns() {
    unsigned marks = 0;
    unsigned ordinary = 0;
    for (unsigned code = 0; code < classes_.size(); ++code) {
      const auto unit = static_cast<gchar_t>(code);
      if (unit == 0 || isgcharspace(unit) || isShapeChar(unit)) continue;
      const bool isMark = isGraphChar(unit);
      classes_[unit] = isMark ? Class::mark : Class::ordinary;
      if (isMark) {
        add(unit, marks_, marks);
      } else if (leadOf(unit) >= 0xB0 && leadOf(unit) <= 0xF7 && trailOf(unit) >= 0xA1) {
        add(unit, ordinary_, ordinary);
      }
    }
  }

  // Blanks and shapes stand for themselves: they are not asked for their number.
  gchar_t of(gchar_t unit, std::size_t number) const {
    switch (classes_[unit]) {
      case Class::mark: return marks_[number & 0xFF];
      case Class::ordinary: return ordinary_[number & 0xFF];
      default: return unit;
    }
  }
  std::uint32_t numberOf(gchar_t standIn) const { return numbers_[standIn]; }

 private:
  enum class Class : Byte { passedOver, mark, ordinary };
  using Codes = std::array<gchar_t, 1 << kBits>;

  void add(gchar_t unit, Codes& codes, unsigned& count) {
    if (count == codes.size()) return;
    numbers_[unit] = static_cast<Byte>(count);
    codes[count++] = unit;
  }

  Codes marks_{};
  Codes ordinary_{};
  std::array<Class, 0x10000> classes_{};
  std::array<Byte, 0x10000> numbers_{};
};

class TrimStage : public Stage {
 public:
  explicit TrimStage(EncodingConvertor& converter) {
    for (unsigned short c = 0; c < widenedAscii_.size(); ++c) {
      widenedAscii_[c] = converter.getucgvalue(c);
    }
  }

  void apply(std::string_view text, bool, std::string& out) override {
    forEachLine(text, out, [&](std::string_view line) {
      const std::string_view body = withoutCarriageReturn(line);
      trim(body, out);
      out.append(line.substr(body.size()));
    });
  }

 private:
  void trim(std::string_view line, std::string& out) {
    widen(line);
    findKept();
    const char* at = line.data();
    std::size_t number = 0;  // of the character there
    const auto step = [&] {
      at += isAscii(static_cast<Byte>(*at)) ? 1 : 2;
      ++number;
    };
    const char* begin = at;  // of what is kept, up to `at`
    for (std::size_t i = 0; i < kept_.size(); ++i) {
      if (isgcharspace(trimmed_[i])) {
        out.append(begin, at);
        while (!isgcharspace(widened_[number])) step();
        appendBlank(*at, trimmed_[i], out);
        begin = at;
      } else {
        if (number != kept_[i]) {
          out.append(begin, at);
          while (number != kept_[i]) step();
          begin = at;
        }
        step();
      }
    }
    out.append(begin, at);
  }

  void widen(std::string_view line) {
    widened_.clear();
    for (std::size_t at = 0; at < line.size();) {
      const auto b = static_cast<Byte>(line[at]);
      widened_.push_back(isAscii(b) ? widenedAscii_[b] : unitAt(line.data() + at));
      at += isAscii(b) ? 1 : 2;
    }
  }

  // Fills trimmed_ with the stand-ins that are left and kept_ with their numbers.
  void findKept() {
    const std::size_t size = widened_.size();
    source_.resize(size + 1);
    source_[size] = 0;
    trimmed_.resize(size + 1);
    for (unsigned shift = 0; shift == 0 || size >> shift != 0; shift += StandIns::kBits) {
      for (std::size_t i = 0; i < size; ++i) source_[i] = standIns_.of(widened_[i], i >> shift);
      const std::size_t left = trimgPunc(source_.data(), size + 1, trimmed_.data()) - 1;
      if (shift == 0) kept_.assign(left, 0);
      for (std::size_t i = 0; i < left; ++i) kept_[i] |= standIns_.numberOf(trimmed_[i]) << shift;
    }
  }

  // A run of blanks becomes the first of them, or its line end.
  static void appendBlank(char first, gchar_t trimmed, std::string& out) {
    if (trimmed == RETURN_CONVERSION_CHAR) {
      out += '\r';
    } else if (!isAscii(static_cast<Byte>(first))) {
      out.append("\xA1\xA1");
    } else {
      out += first == '\t' ? '\t' : ' ';
    }
  }

  const StandIns standIns_;
  std::array<gchar_t, 0x80> widenedAscii_;
  // Of the line: as the library would see it, with stand-ins, and what is left of these.
  std::vector<gchar_t> widened_;
  std::vector<gchar_t> source_;
  std::vector<gchar_t> trimmed_;
  std::vector<std::uint32_t> kept_;
};

class TruncateStage : public Stage {
 public:
  explicit TruncateStage(std::size_t limit) : limit_(limit) {}

  void apply(std::string_view text, bool lineGoesOn, std::string& out) override {
    const std::size_t lastLine = text.rfind('\n') + 1;
    const std::string_view part = lineGoesOn ? text.substr(lastLine) : std::string_view();
    text.remove_suffix(part.size());
    if (!begun_.empty() && !(lineGoesOn && text.empty())) {
      const std::size_t end = std::min(text.find('\n'), text.size());
      keep(text.substr(0, end));
      cutLine(begun_, out);
      begun_.clear();
      text.remove_prefix(end);
    }
    forEachLine(text, out, [&](std::string_view line) { cutLine(line, out); });
    keep(part);
  }

 private:
  void keep(std::string_view part) {
    if (begun_.size() <= limit_ + 2) {
      begun_.append(part);
    } else if (!part.empty()) {
      // Of a line that is too long already, all that matters is whether it ends in a return.
      begun_.back() = part.back() == '\r' ? '\r' : '-';
    }
  }

  void cutLine(std::string_view line, std::string& out) {
    const std::string_view body = withoutCarriageReturn(line);
    cut(body, out);
    out.append(line.substr(body.size()));
  }

  void cut(std::string_view line, std::string& out) {
    if (line.size() <= limit_) {
      out.append(line);
      return;
    }
    // No more of the line has a say in where it is cut.
    standIn_.clear();
    for (std::size_t at = 0; at < line.size() && standIn_.size() <= limit_;) {
      const auto b = static_cast<Byte>(line[at]);
      if (!isAscii(b)) {
        standIn_ += "\xB0\xA1";
      } else {
        const bool isWord = (b >= '0' && b <= '9') || ((b | 0x20) >= 'a' && (b | 0x20) <= 'z');
        standIn_ += isWord || b == '.' ? static_cast<char>(b) : '-';
      }
      at += isAscii(b) ? 1 : 2;
    }
    const std::size_t begin = out.size();
    out.resize(begin + limit_ + 1);
    const int written = sbc2dbc(standIn_.data(), static_cast<int>(standIn_.size()),
                                out.data() + begin, static_cast<int>(limit_ + 1), false);
    const std::size_t dots = std::min<std::size_t>(3, limit_);
    const std::size_t kept = static_cast<std::size_t>(written) - dots;
    out.replace(begin, limit_ + 1, line.substr(0, kept));
    out.append(dots, '.');
  }

  const std::size_t limit_;
  std::string begun_;  // a line that goes on
  std::string standIn_;
};

}  // namespace

std::unique_ptr<Stage> makeTrimStage(EncodingConvertor& converter) {
  return std::make_unique<TrimStage>(converter);
}

std::unique_ptr<Stage> makeTruncateStage(std::size_t limit) {
  return std::make_unique<TruncateStage>(limit);
}

}  // namespace cli
