#include "detect.h"

#include <algorithm>

namespace sgbk::text {
namespace {

using namespace std::string_view_literals;

// Fewer bytes of ASCII in front of something else may be the bytes of ideographs in UTF-16.
constexpr std::size_t kSurelyAscii = 16;
constexpr std::size_t kSurelyLine = 6;  // with its line feed

// Two bytes of UTF-8 are often a pair of GBK in use, but for the accents of Western Europe; three
// or four bytes hardly ever.
constexpr unsigned kSequenceWeight = 6;
constexpr unsigned kLooseSequenceWeight = 1;
// Among so many sequences one may be damaged.
constexpr std::uint64_t kSequencesToBad = 20;

// A loss among the characters that few texts have.
constexpr std::uint64_t kLossWeight = 3;
// Of so many characters one may be strange, and so much stranger the next best reading has to be.
constexpr std::uint64_t kClearRatio = 4;
constexpr std::uint64_t kClearDistance = 4;
// In Big5 nearly half of the trail bytes in any text are below A1, and in GB 2312 none.
constexpr std::uint64_t kPairsToLowTrail = 4;

// Byte-order marks; those of UTF-32, which is not read, come before what they begin with.
constexpr std::pair<std::string_view, std::optional<Source>> kMarks[] = {
    {"\xFF\xFE\0\0"sv, std::nullopt}, {"\0\0\xFE\xFF"sv, std::nullopt},
    {"\xEF\xBB\xBF", Source::utf8},   {"\xFF\xFE", Source::ucs2le},
    {"\xFE\xFF", Source::ucs2be},     {"\x84\x31\x95\x33", Source::gbk},
};

constexpr const char* kUtf32 = "this is UTF-32 by its byte-order mark, which is not read here";

// Of simplified GBK: punctuation, full-width ASCII, and the ideographs that GB 2312 has first, more
// than 99 % of most texts.
constexpr bool isCommon(Byte lead, Byte trail) {
  if (lead == 0xA1) return (trail >= 0xA1 && trail <= 0xA4) || (trail >= 0xAA && trail <= 0xBF);
  if (lead == 0xA8) return trail >= 0x43 && trail <= 0x45;
  return trail >= 0xA1 && (lead == 0xA3 || (lead >= 0xB0 && lead <= 0xD7));
}

// A char may have a sign or not.
constexpr bool isAsciiCharacter(char c) { return static_cast<signed char>(c) > 0; }

constexpr bool isUnits(Source source) {
  return source == Source::ucs2le || source == Source::ucs2be;
}

}  // namespace

Detector::Reading::Reading(Source readAs)
    : source(readAs), decoder(makeDecoder(readAs, {account})) {
  decoder->setOutput(codeTable({.codes = codesOf(source)}), out);
}

void Detector::Reading::take(std::string_view held, bool ended) {
  const std::string_view rest = held.substr(account.counts.bytes);
  const std::size_t size = decoder->take(rest, ended);
  const Byte* const bytes = bytesOf(rest.data());
  for (std::size_t i = 0; source == Source::big5 && i + 1 < size; ++i) {
    if (!isAscii(bytes[i])) lowTrails += isAscii(bytes[++i]);
  }
  const std::string_view text = out.view();
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto b = static_cast<Byte>(text[i]);
    nuls += b == '\0';
    if (isAscii(b)) continue;
    ++beyond;
    rare += !isCommon(b, static_cast<Byte>(text[++i]));
  }
  out.clear();
}

std::uint64_t Detector::Reading::strangeness() const {
  const std::uint64_t wanted = source == Source::big5 ? beyond / kPairsToLowTrail : 0;
  return rare + kLossWeight * (account.lost() + nuls) + wanted - std::min(wanted, lowTrails);
}

std::uint64_t Detector::Reading::bad() const {
  const auto& reasons = account.counts.reasons;
  return reasons[SGBK_MALFORMED] + reasons[SGBK_UNDEFINED];
}

Detector::Detector(Source asked) : asked_(asked) {
  if (asked == Source::ucs2) return;
  for (const Source source :
       {Source::ucs2be, Source::ucs2le, Source::big5, Source::gbk, Source::utf8}) {
    readings_.emplace_front(source);
  }
}

// Whether a line closes what it opens, with characters in between of which half are common.
bool Detector::isHz(std::string_view line) {
  // A last "~" joins lines, and DEL is a character in ASCII mode alone.
  const std::string text = std::string(line.substr(0, line.find_last_not_of("~\r\n") + 1)) + '\x7F';
  Reading reading(Source::hz);
  reading.take(text, true);
  return reading.account.lost() == 0 && reading.beyond != 0 && 2 * reading.rare <= reading.beyond;
}

// How much is ASCII, up to what may begin something else.
std::size_t Detector::asciiPrefix(std::string_view held, bool ended) const {
  std::size_t size = 0;
  while (size < held.size() && isAsciiCharacter(held[size])) {
    const std::string_view rest = held.substr(size, 2);
    if (rest == "~{" || (rest == "~" && !ended)) break;
    size += rest == "~~" ? 2 : 1;
  }
  const bool hasLine = held.substr(0, size).rfind('\n') + 1 >= kSurelyLine;
  const bool isSure =
      !head_.empty() || size >= kSurelyAscii || hasLine || (ended && size == held.size());
  return isSure ? size : 0;
}

void Detector::release(Verdict& verdict, std::string_view ascii) {
  head_.append(ascii.substr(0, kDeclarationBytes - head_.size()));
  verdict.ascii += ascii.size();
  std::erase_if(readings_, [](const Reading& reading) { return isUnits(reading.source); });
}

void Detector::add(std::string_view held, bool ended) {
  for (const char c : held.substr(judged_)) {
    const auto b = static_cast<Byte>(c);
    highBytes_ += !isAscii(b);
    others_ += b > 0xC3;
    if (b >= 0xC2) utf8Weight_ += b <= 0xC3 || b >= 0xE0 ? kSequenceWeight : kLooseSequenceWeight;
  }
  judged_ = held.size();
  for (Reading& reading : readings_) reading.take(held, ended);
}

Detector::Verdict Detector::look(std::string_view held, bool ended) {
  Verdict verdict;
  if (asked_ == Source::ucs2) {
    const bool isBigEndian = held.starts_with("\xFE\xFF");
    if (held.size() >= 2 || ended) verdict.source = isBigEndian ? Source::ucs2be : Source::ucs2le;
    return verdict;
  }
  if (head_.empty() && judged_ == 0) {
    for (const auto& [mark, source] : kMarks) {
      if (held.starts_with(mark)) return {0, source, source ? "" : kUtf32};
      if (!ended && mark.starts_with(held)) return verdict;
    }
  }
  for (;;) {
    const std::string_view rest = held.substr(verdict.ascii, kMost);
    const bool isFull = rest.size() == kMost;
    const bool isAll = ended && !isFull;
    if (judged_ == 0) {
      if (const std::size_t prefix = asciiPrefix(rest, isAll); prefix != 0) {
        release(verdict, rest.substr(0, prefix));
        continue;
      }
    }
    // Line by line, so that the first one at which it can be told is the same for any cutting. What
    // follows the last line feed comes by itself, even if it is nothing.
    const std::size_t lineFeed = rest.find('\n', judged_);
    const bool isLast = lineFeed == std::string_view::npos;
    if (isLast && !isAll && !isFull) return verdict;
    const std::size_t end = isLast ? rest.size() : lineFeed + 1;
    const std::string_view line = rest.substr(0, end);
    if (judged_ == 0 && std::ranges::all_of(line, isAsciiCharacter)) {
      if (isHz(line)) verdict.source = Source::hz;
      // In UTF-16 a NUL may follow.
      const bool isSure = !head_.empty() || end >= kSurelyAscii;
      const bool isNextSeen = end != rest.size() || isAll;
      if (verdict.source || (!isSure && !isNextSeen)) return verdict;
      if (!isLast && (isSure || end == rest.size() || rest[end] != '\0')) {
        release(verdict, line);
        continue;
      }
    }
    add(line, isLast && isAll);
    verdict.source = decide(line, isLast);
    if (isLast && !verdict.source) verdict.refusal = advice();
    if (verdict.source || isLast) return verdict;
  }
}

// The most like Chinese text first.
std::vector<const Detector::Reading*> Detector::ranked() const {
  std::vector<const Reading*> result;
  for (const Reading& reading : readings_) result.push_back(&reading);
  std::ranges::stable_sort(result, {}, &Reading::strangeness);
  return result;
}

// What the page says it is, unless it is damaged as that.
const Detector::Reading* Detector::declared(std::string_view held) const {
  const std::string head = head_ + std::string(held.substr(0, kDeclarationBytes - head_.size()));
  const auto source = sourceNamed(declaredEncoding(head));
  for (const Reading& reading : readings_) {
    const std::uint64_t malformed = reading.account.counts.reasons[SGBK_MALFORMED];
    if (source == reading.source && 100 * malformed < reading.beyond) return &reading;
  }
  return nullptr;
}

std::optional<Source> Detector::decide(std::string_view held, bool ended) const {
  const Reading& utf8 = readings_.front();
  const Reading& gbk = *std::next(readings_.begin());
  const bool isUtf8 = utf8Weight_ >= (ended ? 1 : 2) * kSequenceWeight &&
                      utf8Weight_ >= kSequenceWeight * kSequencesToBad * (utf8.bad() + utf8.nuls);
  const bool isNoGbk = others_ == 0 || utf8.strangeness() == 0 || gbk.strangeness() != 0;
  if (isUtf8 && isNoGbk) return Source::utf8;
  const auto readings = ranked();
  const Reading& best = *readings[0];
  const std::uint64_t strange = best.strangeness();
  const Reading* const declared = this->declared(held);
  if (declared != nullptr && declared->strangeness() == strange) return declared->source;
  const std::uint64_t size = isUnits(best.source) ? best.account.counts.characters : best.beyond;
  const bool isClear = readings[1]->strangeness() >= kClearRatio * strange + kClearDistance;
  if (isClear && !isUtf8 && kClearRatio * strange <= size) return best.source;
  if (ended && declared != nullptr) return declared->source;
  return ended && highBytes_ == 0 ? std::optional(Source::utf8) : std::nullopt;
}

std::string Detector::advice() const {
  std::string sentence = "cannot tell the encoding, so it has to be named; most likely it is ";
  const char* separator = "";
  for (const Reading* reading : ranked()) {
    sentence.append(separator).append(nameOf(reading->source)).append(" (");
    sentence += std::to_string(reading->bad()) + " of " +
                std::to_string(reading->account.counts.characters) + " characters would be lost, " +
                std::to_string(reading->rare) + " are rare)";
    separator = ", then ";
  }
  return sentence;
}

}  // namespace sgbk::text
