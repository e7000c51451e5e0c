#include "converter.h"

#include <cstdio>
#include <utility>

#include "declaration.h"
#include "library_tables.h"

namespace sgbk::text {
namespace {

// Of a line without an end, under strict.
constexpr std::size_t kMostHeld = 1 << 18;
// Text stays in the processor's cache on its way through the stages.
constexpr std::ptrdiff_t kBlock = 1 << 16;
// More than any character, or reference in UTF-16, goes on.
constexpr std::size_t kEnoughToGoOn = 2 * kLongestReference + 6;

// The offset after the last line feed, 0 when there is none.
std::size_t afterLastLineFeed(std::string_view text, bool inUnits) {
  if (!inUnits) return text.rfind('\n') + 1;
  std::size_t end = text.size();
  while (end != 0 && (text[end - 2] != '\n' || text[end - 1] != '\0')) end -= 2;
  return end;
}

std::string_view viewOf(const Byte* begin, const Byte* end) {
  return {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(end - begin)};
}

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

Converter::Converter(Source source, Target target)
    : asked_(source), target_(target), source_(source) {
  libraryTables();
}

void Converter::set(const char* option, const char* value) {
  if (isStarted_) throw Failure{SGBK_USAGE, "options are set before the first byte of input"};
  setOption(options_, option, value);
}

void Converter::reset() {
  isEnded_ = isStarted_ = false;
  account_.reset();
  for (Buffer* buffer : {&out_, &unfound_, &carried_, &middle_, &staged_[0], &staged_[1]})
    buffer->clear();
  held_ = 0;
  source_ = asked_;
  stages_.clear();
}

TableKey Converter::key(Codes codes, Form form) const {
  return {.codes = codes,
          .target = target_,
          .form = form,
          .simplify = options_.simplify,
          .halfWidth = options_.halfWidth || options_.html,
          .foldCase = options_.foldCase,
          .markup = options_.html,
          .traditional = options_.traditional};
}

void Converter::start() {
  checkTogether(options_, asked_, target_);
  account_.setList(options_.losses);
  account_.setStrict(options_.strict);
  isDeclaring_ = options_.declare || options_.html;
  searched_ = 0;
  if (options_.trim) stages_.push_back(makeTrimStage());
  if (options_.truncate) stages_.push_back(makeTruncateStage(*options_.truncate));
  if (hasMiddle()) {
    TableKey back = key(Codes::gbk, Form::target);
    back.simplify = back.halfWidth = back.foldCase = false;
    encoder_ = makeMiddleDecoder({unheeded_, false, none_});
    encoder_->setOutput(codeTable(back), out_);
  }
  // ASCII is the same in all that may be found.
  if (asked_ == Source::automatic) detector_ = std::make_unique<Detector>();
  if (asked_ != Source::ucs2) setSource(asked_);
  isStarted_ = true;
}

void Converter::setSource(Source source) {
  source_ = source;
  account_.setSource(source);
  decoder_ = makeDecoder(source, {account_, options_.entities, replacement_});
  setForm(hasMiddle() ? Form::middle : Form::target);
}

void Converter::setForm(Form form) {
  form_ = form;
  decoder_->setOutput(codeTable(key(codesOf(source_), form)),
                      form == Form::middle ? middle_ : out_);
  if (options_.replace) setReplacement(form);
}

void Converter::setReplacement(Form form) {
  const std::string text = options_.html ? escaped(*options_.replace) : *options_.replace;
  replacement_.emplace();
  Account account;
  const auto decoder = makeUtf8Decoder({account, false, none_});
  decoder->setOutput(codeTable(key(Codes::unicode, form)), *replacement_);
  account.beginPiece(bytesOf(text.data()));
  decoder->decode(bytesOf(text.data()), bytesOf(text.data()) + text.size(), true);
  if (account.lost() != 0 || text.find('\n') != std::string::npos) {
    throw Failure{SGBK_USAGE, std::string("replace: not a line of UTF-8 that ") + nameOf(target_) +
                                  " can hold: '" + *options_.replace + "'"};
  }
}

void Converter::convert(std::string_view in, bool last) {
  out_.removePrefix(isEnded_ ? out_.size() : output().size());
  held_ = 0;
  account_.losses().clear();
  if (isEnded_) throw Failure{SGBK_USAGE, "the input has ended: reset comes first"};
  isEnded_ = true;  // should anything be thrown
  if (!isStarted_) start();
  const bool isFound = detector_ == nullptr && source_ != Source::ucs2;
  bool isRefused = false;
  try {
    isFound ? declare(in, last) : find(in, last, isRefused);
  } catch (const Account::Stop&) {
    if (isDeclaring_) {
      endDeclaring(true);
    } else if (form_ == Form::middle) {
      takeThroughStages(true);
    }
  }
  if (!isHeldBefore()) {
    const bool isUnits = target_ == Target::utf16le;
    held_ = out_.size() - wholeLines(out_.view(), isUnits, last && !isRefused);
  }
  if (isRefused) throw Failure{SGBK_UNKNOWN_SOURCE, detector_->advice()};
  if (isStopped()) throw Failure{SGBK_LOST, sentenceFor(account_.counts().first)};
  isEnded_ = last;
}

void Converter::find(std::string_view in, bool last, bool& isRefused) {
  unfound_.append(in);
  std::optional<Source> source;
  if (asked_ == Source::ucs2) {
    if (unfound_.size() < 2 && !last) return;
    source = unfound_.view().starts_with("\xFE\xFF") ? Source::ucs2be : Source::ucs2le;
  } else {
    const Detector::Verdict verdict = detector_->look(unfound_.view(), last);
    if (verdict.ascii != 0) {
      declare(unfound_.view().substr(0, verdict.ascii), false);
      unfound_.removePrefix(verdict.ascii);
    }
    isRefused = verdict.isRefused;
    source = verdict.source;
  }
  if (!source) return;
  detector_.reset();
  setSource(*source);
  const Buffer rest = std::exchange(unfound_, Buffer());
  declare(rest.view(), last);
}

// The beginning of a page is looked through for the encoding that it declares.
void Converter::declare(std::string_view in, bool last) {
  if (isDeclaring_) {
    const auto part = in.substr(0, kDeclarationBytes - searched_);
    searched_ += part.size();
    in.remove_prefix(part.size());
    decode(part, last && in.empty());
    if (searched_ != kDeclarationBytes && !last) return;
    endDeclaring(last && in.empty());
    if (stages_.empty()) setForm(Form::target);
    if (in.empty()) return;
  }
  decode(in, last);
}

void Converter::endDeclaring(bool last) {
  isDeclaring_ = false;
  const std::string head = withDeclared(middle_.view(), nameOf(target_));
  middle_.clear();
  middle_.append(head);
  takeThroughStages(last);
}

void Converter::decode(std::string_view in, bool last) {
  if (!carried_.empty()) decodeCarried(in, last);
  if (!carried_.empty()) return;
  const Byte* p = bytesOf(in.data());
  const Byte* const end = p + in.size();
  for (;;) {
    const Byte* const blockEnd = end - p > kBlock ? p + kBlock : end;
    const bool isLast = last && blockEnd == end;
    account_.beginPiece(p);
    const Byte* const next = decoder_->decode(p, blockEnd, isLast);
    account_.endPiece(next);
    p = next;
    if (form_ == Form::middle && !isDeclaring_) takeThroughStages(isLast);
    if (blockEnd == end) break;
  }
  carried_.append(viewOf(p, end));
}

// What was left of the input before, with as much of what follows as tells what it is.
void Converter::decodeCarried(std::string_view& in, bool last) {
  const std::size_t before = carried_.size();
  const std::string_view part = in.substr(0, kEnoughToGoOn);
  carried_.append(part);
  const Byte* const begin = bytesOf(carried_.view().data());
  account_.beginPiece(begin);
  const Byte* const end =
      decoder_->decode(begin, begin + carried_.size(), last && part.size() == in.size());
  account_.endPiece(end);
  const auto used = static_cast<std::size_t>(end - begin);
  if (used < before) {
    carried_.removePrefix(used);
    in.remove_prefix(part.size());
  } else {
    carried_.clear();
    in.remove_prefix(used - before);
  }
}

// What a stage does not use yet stays in its buffer.
void Converter::takeThroughStages(bool last) {
  Buffer* in = &middle_;
  for (std::size_t i = 0; i < stages_.size(); ++i) {
    in->removePrefix(stages_[i]->apply(in->view(), last, staged_[i]));
    in = &staged_[i];
  }
  const std::size_t size = isHeldBefore() ? wholeLines(in->view(), false, last) : in->size();
  const Byte* const begin = bytesOf(in->view().data());
  unheeded_.beginPiece(begin);
  encoder_->decode(begin, begin + size, true);
  in->removePrefix(size);
}

// How much of the text goes on: under strict only whole lines, unless one is too long to hold. At a
// loss nothing of its line does.
std::size_t Converter::wholeLines(std::string_view text, bool inUnits, bool last) const {
  if (!options_.strict || (last && !isStopped())) return text.size();
  const std::size_t lines = afterLastLineFeed(text, inUnits);
  return isStopped() || text.size() - lines < kMostHeld ? lines : text.size();
}

}  // namespace sgbk::text
