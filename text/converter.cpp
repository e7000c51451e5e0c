#include "converter.h"

#include <cstdio>
#include <utility>

namespace sgbk::text {
namespace {

// Of a line without an end, under strict.
constexpr std::size_t kMostHeld = 1 << 18;
// Text stays in the processor's cache on its way through the stages.
constexpr std::size_t kBlock = 1 << 16;
// More than any character, or reference in UTF-16, goes on.
constexpr std::size_t kEnoughToGoOn = 2 * kLongestReference + 6;

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    const bool isSpecial = std::string_view("&<>\"'").find(c) != std::string_view::npos;
    result += isSpecial ? "&#" + std::to_string(int{c}) + ";" : std::string(1, c);
  }
  return result;
}

std::string sentenceFor(const sgbk_loss& loss) {
  std::string text =
      "line " + std::to_string(loss.line) + ", byte " + std::to_string(loss.offset) + ":";
  for (std::size_t i = 0; i < loss.size; ++i) {
    char hex[4];
    std::snprintf(hex, sizeof hex, " %02X", loss.bytes[i]);
    text += hex;
  }
  return text + " is " + sgbk_reason_name(loss.reason);
}

}  // namespace

Converter::Converter(Source source, Target target) : asked_(source), source_(source) {
  options_.target = target;
  libraryTables();
}

void Converter::set(const char* option, const char* value) {
  if (isStarted_) throw Failure{SGBK_USAGE, "options are set before the first byte of input"};
  setOption(options_, option, value);
}

void Converter::reset() {
  isEnded_ = isStarted_ = isWhole_ = false;
  given_ = held_ = 0;
  account_ = Account();
  for (Buffer* buffer : {&out_, &unfound_, &carried_, &middle_, &staged_[0], &staged_[1]})
    buffer->clear();
  source_ = asked_;
  stages_.clear();
}

TableKey Converter::key(Codes codes) const {
  TableKey key = options_;
  key.codes = codes;
  key.isMiddle = hasMiddle();
  key.halfWidth |= key.html;
  return key;
}

void Converter::start() {
  checkTogether(options_, asked_);
  account_.isListed = options_.losses;
  account_.isStrict = options_.strict;
  undeclared_ = options_.declare || options_.html ? kDeclarationBytes : 0;
  if (options_.trim) stages_.push_back(makeTrimStage());
  if (options_.truncate) stages_.push_back(makeTruncateStage(*options_.truncate));
  if (hasMiddle()) {
    TableKey back = options_;
    back.codes = Codes::gbk;
    back.simplify = back.halfWidth = back.foldCase = false;
    encoder_ = makeMiddleDecoder({unheeded_});
    encoder_->setOutput(codeTable(back), out_);
  }
  detector_.reset();
  if (asked_ == Source::automatic || asked_ == Source::ucs2)
    detector_ = std::make_unique<Detector>(asked_);
  // ASCII is the same in all that "auto" may find.
  if (asked_ != Source::ucs2) setSource(asked_);
  isStarted_ = true;
}

void Converter::setSource(Source source) {
  source_ = source;
  account_.source = source;
  const Buffer* const replacement = options_.replace ? &replacement_ : nullptr;
  decoder_ = makeDecoder(source, {account_, options_.entities, replacement});
  setForm();
}

void Converter::setForm() {
  decoder_->setOutput(codeTable(key(codesOf(source_))), hasMiddle() ? middle_ : out_);
  if (!options_.replace) return;
  const std::string text = options_.html ? escaped(*options_.replace) : *options_.replace;
  Account account;
  const auto decoder = makeUtf8Decoder({account});
  replacement_.clear();
  decoder->setOutput(codeTable(key(Codes::unicode)), replacement_);
  decoder->take(text, true);
  if (account.lost() != 0 || text.find('\n') != std::string::npos) {
    throw Failure{SGBK_USAGE, std::string("replace: not a line of UTF-8 that ") +
                                  nameOf(options_.target) + " can hold: '" + *options_.replace +
                                  "'"};
  }
}

void Converter::convert(std::string_view in, bool last) {
  out_.removePrefix(isEnded_ ? out_.size() : given_);
  given_ = 0;
  if (!isHeldBefore()) held_ = out_.size();
  account_.losses.clear();
  if (isEnded_) throw Failure{SGBK_USAGE, "the input has ended: reset comes first"};
  isEnded_ = true;  // should anything be thrown
  if (!isStarted_) start();
  try {
    find(in, last);
  } catch (const Account::Stop&) {
    if (undeclared_ != 0) {
      endDeclaring(true);
    } else if (hasMiddle()) {
      takeThroughStages(true);
    }
    throw Failure{SGBK_LOST, sentenceFor(account_.counts.first)};
  }
  isEnded_ = isWhole_ = last;
}

std::string_view Converter::output() {
  const bool isUnits = options_.target == Target::utf16le;
  const std::string_view text = out_.view();
  const std::string_view result = isHeldBefore() ? text : wholeLines(text, isUnits, isWhole_);
  given_ = result.size();
  return result;
}

void Converter::find(std::string_view in, bool last) {
  if (detector_ == nullptr) return declare(in, last);
  unfound_.append(in);
  const Detector::Verdict verdict = detector_->look(unfound_.view(), last);
  if (verdict.ascii != 0) {
    declare(unfound_.view().substr(0, verdict.ascii), false);
    unfound_.removePrefix(verdict.ascii);
  }
  if (!verdict.refusal.empty()) throw Failure{SGBK_UNKNOWN_SOURCE, verdict.refusal};
  if (!verdict.source) return;
  detector_.reset();
  setSource(*verdict.source);
  const Buffer rest = std::exchange(unfound_, Buffer());
  declare(rest.view(), last);
}

// The beginning of a page is looked through for the encoding that it declares.
void Converter::declare(std::string_view in, bool last) {
  if (undeclared_ != 0) {
    const auto part = in.substr(0, undeclared_);
    in.remove_prefix(part.size());
    const bool isLast = last && in.empty();
    decode(part, isLast);
    undeclared_ -= part.size();
    if (undeclared_ != 0 && !last) return;
    endDeclaring(isLast);
    if (in.empty()) return;
  }
  decode(in, last);
}

void Converter::endDeclaring(bool last) {
  undeclared_ = 0;
  const std::string head = withDeclared(middle_.view(), nameOf(options_.target));
  middle_.clear();
  middle_.append(head);
  takeThroughStages(last);
  setForm();
}

// What was left of the input before goes first, with as much of what follows as tells what it is.
void Converter::decode(std::string_view in, bool last) {
  for (;;) {
    const std::size_t carried = carried_.size();
    std::string_view part = in.substr(0, carried == 0 ? kBlock : kEnoughToGoOn);
    const bool isAll = part.size() == in.size();
    if (carried != 0) {
      carried_.append(part);
      part = carried_.view();
    }
    const std::size_t taken = decoder_->take(part, last && isAll);
    if (hasMiddle() && undeclared_ == 0) takeThroughStages(last && isAll);
    if (taken < carried) return carried_.removePrefix(taken);
    carried_.clear();
    in.remove_prefix(taken - carried);
    if (isAll) break;
  }
  carried_.append(in);
}

// What a stage does not use yet stays in its buffer.
void Converter::takeThroughStages(bool last) {
  Buffer* in = &middle_;
  for (std::size_t i = 0; i < stages_.size(); ++i) {
    in->removePrefix(stages_[i]->apply(in->view(), last, staged_[i]));
    in = &staged_[i];
  }
  const std::string_view text = isHeldBefore() ? wholeLines(in->view(), false, last) : in->view();
  encoder_->take(text, true);
  in->removePrefix(text.size());
  if (isHeldBefore()) held_ = in->size();
}

// What of the text goes on: under strict only whole lines, unless one is too long to hold. At a
// loss nothing of its line does.
std::string_view Converter::wholeLines(std::string_view text, bool inUnits, bool last) const {
  if (!options_.strict || (last && !isStopped())) return text;
  std::size_t lines = text.size();
  while (lines > held_ && (inUnits ? loadUnit(bytesOf(&text[lines - 2])) : text[lines - 1]) != '\n')
    lines -= inUnits ? 2 : 1;
  if (lines == held_) lines = 0;
  return isStopped() || text.size() - lines < kMostHeld ? text.substr(0, lines) : text;
}

}  // namespace sgbk::text
