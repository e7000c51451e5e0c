#include "converter.h"

#include <cstdio>
#include <utility>

#include "declaration.h"
#include "library_tables.h"

namespace sgbk::text {
namespace {

// Under strict, of a line without an end.
constexpr std::size_t kMostHeld = 1 << 18;
// Text stays in the processor's cache on its way through the stages.
constexpr std::ptrdiff_t kBlock = 1 << 16;
// More than any character, or reference in UTF-16, goes on.
constexpr std::size_t kEnoughToGoOn = 2 * kLongestReference + 6;

LineFeeds lineFeedsOf(Source source) {
  return source == Source::ucs2le   ? LineFeeds::inUnits
         : source == Source::ucs2be ? LineFeeds::inSwappedUnits
                                    : LineFeeds::inBytes;
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
  for (Buffer* buffer : {&out_, &unfound_, &held_, &carried_, &middle_, &staged_[0], &staged_[1]})
    buffer->clear();
  source_ = asked_;
  stages_.clear();
}

TableKey Converter::key(Codes codes, Form form) const {
  TableKey key;
  key.codes = codes;
  key.target = target_;
  key.form = form;
  key.simplify = options_.simplify;
  key.halfWidth = options_.halfWidth || options_.html;
  key.foldCase = options_.foldCase;
  key.markup = options_.html;
  key.traditional = options_.traditional;
  return key;
}

void Converter::start() {
  checkTogether(options_, asked_, target_);
  account_.setList(options_.losses);
  isDeclaring_ = options_.declare || options_.html;
  searched_ = 0;
  seen_ = 0;
  isLineStart_ = true;
  if (options_.trim) stages_.push_back(makeTrimStage());
  if (options_.truncate) stages_.push_back(makeTruncateStage(*options_.truncate));
  if (isDeclaring_ || !stages_.empty()) {
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
  account_.setLineFeeds(lineFeedsOf(source));
  decoder_ = makeDecoder(source, {account_, options_.entities, replacement_});
  setForm(isDeclaring_ || !stages_.empty() ? Form::middle : Form::target);
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
  out_.clear();
  account_.losses().clear();
  if (isEnded_) throw Failure{SGBK_USAGE, "the input has ended: reset comes first"};
  isEnded_ = true;  // should anything be thrown
  if (!isStarted_) start();
  const bool isFound = detector_ == nullptr && source_ != Source::ucs2;
  isFound ? holdLines(in, last) : find(in, last);
  isEnded_ = last;
}

void Converter::find(std::string_view in, bool last) {
  unfound_.append(in);
  std::optional<Source> source;
  if (asked_ == Source::ucs2) {
    if (unfound_.size() < 2 && !last) return;
    source = ucs2Order(unfound_.view());
  } else {
    const Detector::Verdict verdict = detector_->look(unfound_.view(), last);
    if (verdict.ascii != 0) {
      holdLines(unfound_.view().substr(0, verdict.ascii), false);
      unfound_.removePrefix(verdict.ascii);
    }
    if (verdict.isRefused) throw Failure{SGBK_UNKNOWN_SOURCE, detector_->advice()};
    source = verdict.source;
  }
  if (!source) return;
  detector_.reset();
  setSource(*source);
  const Buffer rest = std::exchange(unfound_, Buffer());
  holdLines(rest.view(), last);
}

// Under strict, text goes on in whole lines.
void Converter::holdLines(std::string_view in, bool last) {
  if (!options_.strict) return declare(in, last);
  const LineFeeds kind = lineFeedsOf(source_);
  while ((!held_.empty() || !isLineStart_) && !in.empty()) {
    const std::size_t half = kind == LineFeeds::inBytes ? 0 : held_.size() % 2;
    const std::size_t line = afterFirstLineFeed(in.substr(std::min(half, in.size())), kind);
    const std::size_t size =
        std::min(line == 0 ? in.size() : half + line, kMostHeld - held_.size());
    held_.append(in.substr(0, size));
    in.remove_prefix(size);
    const bool isLine = afterLastLineFeed(held_.view(), kind) == held_.size();
    if (!isLine && held_.size() != kMostHeld) continue;
    const Buffer lines = std::exchange(held_, Buffer());
    stopAtLoss(lines.view(), last && in.empty());
    if (last && in.empty()) return;
  }
  if (!held_.empty() && !last) return;
  if (!held_.empty()) {
    const Buffer lines = std::exchange(held_, Buffer());
    return stopAtLoss(lines.view(), true);
  }
  std::size_t size = last ? in.size() : afterLastLineFeed(in, kind);
  if (in.size() - size >= kMostHeld) size = in.size() / 2 * 2;
  stopAtLoss(in.substr(0, size), last);
  held_.append(in.substr(size));
}

// Converts whole lines, or a part of a line that is too long to hold. At a loss, converts them
// again as far as the line of the loss.
void Converter::stopAtLoss(std::string_view lines, bool last) {
  const Account::Mark mark = account_.mark();
  const std::size_t written = out_.size();
  const bool wasDeclaring = isDeclaring_;
  const std::size_t searched = searched_;
  const std::string head(wasDeclaring ? middle_.view() : std::string_view());
  const bool isLineStart = isLineStart_;
  if (!lines.empty()) isLineStart_ = afterLastLineFeed(lines, lineFeedsOf(source_)) == lines.size();
  declare(lines, last);
  if (account_.lost() == 0) {
    seen_ += lines.size();
    return;
  }
  const sgbk_loss loss = account_.counts().first;
  account_.goBackTo(mark);
  out_.cut(written);
  if (isLineStart) {
    for (Buffer* buffer : {&middle_, &staged_[0], &staged_[1], &carried_}) buffer->clear();
    middle_.append(head);
    for (const auto& stage : stages_) stage->reset();
    decoder_->reset();
    isDeclaring_ = wasDeclaring;
    searched_ = searched;
    setForm(isDeclaring_ || !stages_.empty() ? Form::middle : Form::target);
    const auto before = lines.substr(0, static_cast<std::size_t>(loss.offset - seen_));
    const std::size_t size = afterLastLineFeed(before, lineFeedsOf(source_));
    declare(before.substr(0, size), true);
    // The characters in front of the loss count, but are not written.
    const std::size_t whole = out_.size();
    declare(before.substr(size), true);
    out_.cut(whole);
  }
  account_.addAgain(loss);
  throw Failure{SGBK_LOST, sentenceFor(loss)};
}

// The beginning of a page is looked through for the encoding that it declares.
void Converter::declare(std::string_view in, bool last) {
  if (isDeclaring_) {
    const auto part = in.substr(0, kDeclarationBytes - searched_);
    searched_ += part.size();
    in.remove_prefix(part.size());
    decode(part, last && in.empty());
    if (searched_ != kDeclarationBytes && !last) return;
    isDeclaring_ = false;
    const std::string head = withDeclared(middle_.view(), nameOf(target_));
    middle_.clear();
    middle_.append(head);
    takeThroughStages(last && in.empty());
    if (stages_.empty()) setForm(Form::target);
    if (in.empty()) return;
  }
  decode(in, last);
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
  const Byte* const begin = bytesOf(in->view().data());
  unheeded_.beginPiece(begin);
  encoder_->decode(begin, begin + in->size(), true);
  in->clear();
}

}  // namespace sgbk::text
