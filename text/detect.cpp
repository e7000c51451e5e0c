#include "detect.h"

#include <algorithm>
#include <array>

#include "declaration.h"
#include "library_tables.h"

namespace sgbk::text {
namespace {

using namespace std::string_view_literals;

// Fewer bytes of ASCII in front of something else may be the bytes of ideographs in UTF-16.
constexpr std::size_t kSurelyAscii = 16;
// A few characters of another encoding may happen to be valid UTF-8: weighed by their bytes.
constexpr std::uint64_t kEnoughUtf8 = 8;
// Losses in the runner-up for each one in the best.
constexpr std::uint64_t kClearRatio = 20;
// Trail bytes without one below A1, after which text is not Big5.
constexpr std::uint64_t kEnoughPairs = 24;

constexpr std::pair<std::string_view, Source> kMarks[] = {
    {"\xEF\xBB\xBF", Source::utf8},
    {"\xFF\xFE", Source::ucs2le},
    {"\xFE\xFF", Source::ucs2be},
    {"\x84\x31\x95\x33", Source::gbk},
};
constexpr std::string_view kUtf32Marks[] = {"\xFF\xFE\0\0"sv, "\0\0\xFE\xFF"sv};

bool isAsciiText(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return isAscii(static_cast<Byte>(c)); });
}

// Whether a line opens what it closes, with pairs of GB 2312 alone in between.
bool isHzLine(std::string_view line) {
  bool isGbMode = false;
  bool hasPairs = false;
  for (std::size_t at = 0; at < line.size();) {
    const std::string_view rest = line.substr(at);
    if (isGbMode && rest.starts_with("~}")) {
      isGbMode = false;
    } else if (isGbMode) {
      if (rest.size() < 2) return false;
      const gchar_t unit = static_cast<gchar_t>(loadUnit(bytesOf(rest.data())) | 0x8080);
      const bool isPair = rest[0] >= '!' && rest[0] <= 'w' && rest[1] >= '!' && rest[1] <= '~';
      if (!isPair || libraryTables().fromGbk[unit] == 0) return false;
      hasPairs = true;
    } else if (rest[0] != '~') {
      ++at;
      continue;
    } else if (rest.starts_with("~{")) {
      isGbMode = true;
    } else if (!rest.starts_with("~~") && rest.size() != 1) {
      return false;
    }
    at += 2;
  }
  return !isGbMode && hasPairs;
}

// Units as Chinese text has them: ASCII, its punctuation, common ideographs.
bool isLikelyUnit(unsigned unit) {
  return (unit >= 0x20 && unit < 0x7F) || unit == '\n' || unit == '\r' || unit == '\t' ||
         (unit >= 0x2010 && unit <= 0x2026) || (unit >= 0x3000 && unit <= 0x3129) ||
         (unit >= 0x4E00 && unit <= 0x9FFF) || (unit >= 0xFF00 && unit <= 0xFF5E);
}

// UTF-16 without a mark shows by the zero bytes of its ASCII.
std::optional<Source> unmarkedUnits(std::string_view text) {
  std::size_t zeros = 0;
  std::size_t likely[2] = {};
  const std::size_t units = text.size() / 2;
  for (std::size_t i = 0; i < units; ++i) {
    const auto first = static_cast<Byte>(text[2 * i]);
    const auto second = static_cast<Byte>(text[2 * i + 1]);
    zeros += (first == 0) + (second == 0);
    likely[0] += isLikelyUnit(static_cast<unsigned>(first | second << 8));
    likely[1] += isLikelyUnit(static_cast<unsigned>(first << 8 | second));
  }
  if (zeros == 0) return std::nullopt;
  for (const int order : {0, 1}) {
    if (likely[order] * 20 >= units * 19 && likely[1 - order] * 2 <= units) {
      return order == 0 ? Source::ucs2le : Source::ucs2be;
    }
  }
  return std::nullopt;
}

}  // namespace

Detector::Trial::Trial(Source triedSource, Codes codes)
    : source(triedSource), out(std::make_unique<Buffer>()), account(std::make_unique<Account>()) {
  static const std::optional<Buffer> kNoReplacement;
  decoder = makeDecoder(source, {*account, false, kNoReplacement});
  TableKey key;
  key.codes = codes;
  key.target = Target::utf8;
  decoder->setOutput(codeTable(key), *out);
}

void Detector::Trial::add(std::string_view lines, bool areWhole) {
  const Byte* const begin = bytesOf(lines.data());
  account->beginPiece(begin);
  decoder->decode(begin, begin + lines.size(), areWhole);
  account->endPiece(begin + lines.size());
  out->clear();
}

Detector::Detector()
    : big5_(Source::big5, Codes::big5),
      gbk_(Source::gbk, Codes::gbk),
      utf8_(Source::utf8, Codes::unicode) {}

Source ucs2Order(std::string_view start) {
  return start.starts_with("\xFE\xFF") ? Source::ucs2be : Source::ucs2le;
}

// How much is ASCII, up to what may begin something else.
std::size_t Detector::asciiPrefix(std::string_view held, bool ended) const {
  std::size_t size = 0;
  while (size != held.size() && isAscii(static_cast<Byte>(held[size])) && held[size] != '\0' &&
         !held.substr(size).starts_with("~{")) {
    ++size;
  }
  const bool mayGoOn = size == held.size() && !ended && held.ends_with('~');
  return size - mayGoOn;
}

bool Detector::mayRelease(std::string_view held, std::size_t prefix, bool ended) const {
  if (released_ != 0 || prefix >= kSurelyAscii) return true;
  if (ended && prefix == held.size()) return true;
  const std::size_t lineFeed = held.substr(0, prefix).rfind('\n');
  return lineFeed != std::string_view::npos && lineFeed >= 2;
}

void Detector::keepHead(std::string_view ascii) {
  if (head_.size() < kDeclarationBytes)
    head_.append(ascii.substr(0, kDeclarationBytes - head_.size()));
}

void Detector::add(std::string_view lines, bool areWhole) {
  for (Trial* trial : {&big5_, &gbk_, &utf8_}) trial->add(lines, areWhole);
  for (std::size_t at = 0; at < lines.size(); ++at) {
    const auto b = static_cast<Byte>(lines[at]);
    highBytes_ += !isAscii(b);
    longSequences_ += b >= 0xE0;
    shortSequences_ += b >= 0xC2 && b < 0xE0;
  }
  for (std::size_t at = 0; at + 1 < lines.size(); ++at) {
    if (isAscii(static_cast<Byte>(lines[at]))) continue;
    ++at;
    ++pairs_;
    lowTrails_ += static_cast<Byte>(lines[at]) < 0xA1;
  }
}

Detector::Verdict Detector::look(std::string_view held, bool ended) {
  Verdict verdict;
  if (released_ == 0 && judged_ == 0) {
    for (const std::string_view mark : kUtf32Marks) {
      if (held.starts_with(mark)) isUtf32_ = verdict.isRefused = true;
      if (isUtf32_ || (!ended && held.size() < mark.size() && mark.starts_with(held)))
        return verdict;
    }
    for (const auto& [mark, source] : kMarks) {
      if (held.starts_with(mark)) verdict.source = source;
      if (verdict.source || (!ended && held.size() < mark.size() && mark.starts_with(held)))
        return verdict;
    }
  }
  for (;;) {
    const std::string_view rest = held.substr(verdict.ascii, kMost);
    const bool isFull = rest.size() == kMost;
    const bool isAll = ended && !isFull;
    if (judged_ == 0) {
      const std::size_t prefix = asciiPrefix(rest, isAll);
      if (prefix != 0 && mayRelease(rest, prefix, isAll)) {
        keepHead(rest.substr(0, prefix));
        released_ += prefix;
        verdict.ascii += prefix;
        continue;
      }
    }
    // Line by line, so that the first one at which it can be told is the same for any cutting.
    const std::size_t lineFeed = rest.find('\n', judged_);
    const bool isLastLine = lineFeed == std::string_view::npos;
    if (isLastLine && !ended && !isFull) return verdict;
    const std::size_t end = isLastLine ? rest.size() : lineFeed + 1;
    const std::string_view line = rest.substr(judged_, end - judged_);
    if (judged_ == 0 && isAsciiText(line) && line.find('\0') == std::string_view::npos) {
      const std::size_t body = line.find_first_of("\r\n");
      if (isHzLine(line.substr(0, body))) {
        verdict.source = Source::hz;
        return verdict;
      }
      if (!isLastLine) {
        keepHead(line);
        released_ += line.size();
        verdict.ascii += line.size();
        continue;
      }
    }
    add(line, !isLastLine || isAll);
    judged_ = end;
    const bool isEnd = end == rest.size() && (isAll || isFull);
    // At a line feed, as if more could follow: often nobody can tell yet whether it does.
    verdict.source = decide(rest.substr(0, end), isEnd && isLastLine);
    if (!verdict.source && isEnd) verdict.source = decide(rest.substr(0, end), true);
    if (verdict.source) return verdict;
    if (isEnd) {
      verdict.isRefused = true;
      return verdict;
    }
  }
}

std::optional<Source> Detector::decide(std::string_view held, bool ended) const {
  if (released_ == 0) {
    if (const auto units = unmarkedUnits(held)) return units;
  }
  if (highBytes_ == 0) return ended ? std::optional(Source::utf8) : std::nullopt;
  const bool isUtf8 = utf8_.lost() == 0;
  if (isUtf8 && (ended || 3 * longSequences_ + 2 * shortSequences_ >= kEnoughUtf8))
    return Source::utf8;
  if (const auto declared = decideByDeclaration(held)) return declared;
  return decideByCounts();
}

std::optional<Source> Detector::decideByDeclaration(std::string_view held) const {
  const std::string head = head_ + std::string(held.substr(0, kDeclarationBytes - head_.size()));
  const auto declared = sourceNamed(declaredEncoding(head));
  for (const Trial* trial : {&big5_, &gbk_, &utf8_}) {
    if (declared == trial->source && trial->malformed() * 100 * 2 < highBytes_) return declared;
  }
  return std::nullopt;
}

std::optional<Source> Detector::decideByCounts() const {
  if (gbk_.lost() == 0 && pairs_ >= kEnoughPairs && lowTrails_ == 0) return Source::gbk;
  std::array trials{&big5_, &gbk_, &utf8_};
  std::sort(trials.begin(), trials.end(),
            [](const Trial* a, const Trial* b) { return a->lost() < b->lost(); });
  const std::uint64_t least = std::max<std::uint64_t>(trials[0]->lost(), 1);
  return trials[1]->lost() >= kClearRatio * least ? std::optional(trials[0]->source) : std::nullopt;
}

std::string Detector::advice() const {
  if (isUtf32_) return "this is UTF-32 by its byte-order mark, which is not read here";
  std::array trials{&big5_, &gbk_, &utf8_};
  std::stable_sort(trials.begin(), trials.end(),
                   [](const Trial* a, const Trial* b) { return a->lost() < b->lost(); });
  std::string sentence = "cannot tell the encoding; it is to be named";
  const char* separator = ": as ";
  for (const Trial* trial : trials) {
    sentence.append(separator).append(nameOf(trial->source)).append(" ");
    sentence += std::to_string(trial->lost()) + " of " +
                std::to_string(trial->account->counts().characters) + " characters would be lost";
    separator = ", as ";
  }
  return sentence;
}

}  // namespace sgbk::text
