#include "pipeline.h"

#include "bytes.h"

namespace cli {
namespace {

bool touchesText(const Options& o) {
  return o.entities || o.halfWidth || o.foldCase || o.trim || o.html || o.truncate;
}

// A double-byte character and where it stands in the input.
struct Located {
  std::uint32_t at;
  gchar_t character;
  std::uint8_t size;
};

// Decodes a line character by character.
std::vector<Located> locate(std::string_view line, Decoder& decoder, Source source) {
  std::vector<Located> found;
  LossReport losses(source, [](const Loss&) {});
  std::string out;
  for (std::size_t at = 0, size = 1; at + size <= line.size(); ++size) {
    out.clear();
    losses.beginPiece(line.substr(at, size));
    const bool ended = at + size == line.size();
    const std::size_t used = decoder.decode(line.substr(at, size), ended, out, losses);
    if (used == 0) continue;
    if (out.size() == 2) {
      found.push_back(
          {static_cast<std::uint32_t>(at), unitAt(out.data()), static_cast<std::uint8_t>(used)});
    }
    at += used;
    size = 0;
  }
  return found;
}

}  // namespace

Pipeline::Pipeline(EncodingConvertor& converter, const Options& o, Source source)
    : converter_(converter), source_(source), simplify_(o.simplify), strict_(o.strict) {
  const Markup markup = o.html ? Markup::escaped : Markup::plain;
  const bool isWide = o.to == Target::gbkWide;
  if (isWide && o.simplify && !touchesText(o)) form_ = Form::wide;

  // The whole order. Simplifying is part of decoding: the library's tables do both at once.
  decoder_ = makeDecoder(converter, source, form_, o.simplify);
  if (o.entities) stages_.push_back(makeEntityStage(converter, markup));
  if (o.halfWidth || o.html) stages_.push_back(makeWidthStage(markup));
  if (o.foldCase) stages_.push_back(makeCaseStage());
  if (o.trim) stages_.push_back(makeTrimStage(converter));
  if (o.truncate) stages_.push_back(makeTruncateStage(*o.truncate));
  if (o.html) stages_.push_back(makeReferenceStage());
  if (isWide && form_ == Form::lines) stages_.push_back(makeWideStage(converter));
  if (o.to == Target::big5) stages_.push_back(makeBig5Stage(converter, unencoded_));
  if (o.to == Target::utf8) stages_.push_back(makeUtf8Stage());
}

Cut Pipeline::cut() const {
  if (strict_) return Cut::oneLine;
  return form_ == Form::wide ? Cut::anywhere : Cut::lines;
}

std::size_t Pipeline::convert(std::string_view piece, bool ended, std::string& out,
                              LossReport& losses) {
  losses.beginPiece(piece);
  std::string& decoded = stages_.empty() ? out : from_;
  if (!stages_.empty()) from_.clear();
  const std::size_t used = decoder_->decode(piece, ended, decoded, losses);
  const bool lineGoesOn = !ended && LineEnds(source_).behindLast(piece.substr(0, used)) != used;
  for (std::size_t i = 0; i < stages_.size(); ++i) {
    const bool isLast = i + 1 == stages_.size();
    if (!isLast) to_.clear();
    stages_[i]->apply(from_, lineGoesOn, isLast ? out : to_);
    from_.swap(to_);
  }
  if (!unencoded_.empty()) reportUnencoded(piece.substr(0, used), losses);
  losses.endPiece(used);
  return used;
}

// Finds the bytes that became the characters which the target does not have. One that was not in
// the input, but came from a reference or from folding, is located at the start of its line.
void Pipeline::reportUnencoded(std::string_view piece, LossReport& losses) {
  const LineEnds lineEnds(source_);
  std::size_t line = 0;
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t next = 0;  // of `characters`
  std::vector<Located> characters;
  for (const Unencoded& lost : unencoded_) {
    if (end == 0 || line != lost.line) {
      for (; line != lost.line; ++line) begin = lineEnds.behindFirst(piece, begin);
      end = lineEnds.behindFirst(piece, begin);
      if (end == 0) end = piece.size();
      const auto decoder = makeDecoder(converter_, source_, Form::lines, simplify_);
      characters = locate(piece.substr(begin, end - begin), *decoder, source_);
      next = 0;
    }
    std::size_t i = next;
    while (i != characters.size() && characters[i].character != lost.character) ++i;
    if (i != characters.size()) {
      losses.add(Reason::undefined, begin + characters[i].at, characters[i].size);
      next = i + 1;
    } else {
      const std::string code = {static_cast<char>(leadOf(lost.character)),
                                static_cast<char>(trailOf(lost.character))};
      losses.add(Reason::undefined, begin, code);
    }
  }
  unencoded_.clear();
}

}  // namespace cli
