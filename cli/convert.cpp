#include "convert.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <set>

#include "chunker.h"
#include "detect.h"
#include "files.h"
#include "pipeline.h"
#include "progress.h"

namespace cli {
namespace {

// Ends the whole run at the first loss, under --strict.
struct StoppedAtLoss {};

// The list of losses that --report asks for.
class ReportFile {
 public:
  explicit ReportFile(const Options& o) : limit_(o.maxReports) {
    if (o.report.empty()) return;
    file_.emplace(o.report, nullptr);
    text_ = "file\tline\tbyte\tbytes\treason\n";
  }

  void beginInput() { count_ = 0; }

  void add(const std::string& name, const Loss& loss) {
    if (!file_ || count_ == limit_) return;
    ++count_;
    appendField(name);
    text_.append("\t").append(std::to_string(loss.line)).append("\t");
    text_.append(std::to_string(loss.offset)).append("\t").append(inHex(loss.bytes)).append("\t");
    text_.append(nameOf(loss.reason)).append("\n");
    if (text_.size() > kBuffered) flush();
  }

  void commit() {
    if (!file_) return;
    flush();
    file_->commit();
  }

  const std::optional<Output>& file() const { return file_; }

 private:
  static constexpr std::size_t kBuffered = 1 << 16;

  // A name may hold what separates fields and lines.
  void appendField(std::string_view name) {
    for (const char c : name) {
      switch (c) {
        case '\t': text_ += "\\t"; break;
        case '\n': text_ += "\\n"; break;
        case '\\': text_ += "\\\\"; break;
        default: text_ += c;
      }
    }
  }

  void flush() {
    file_->write(text_);
    text_.clear();
  }

  const std::uint64_t limit_;
  std::uint64_t count_ = 0;
  std::string text_;
  std::optional<Output> file_;
};

// The sizes of all inputs together, when all are known.
std::optional<std::uint64_t> totalSize(const std::vector<std::string>& files) {
  std::uint64_t total = 0;
  for (const std::string& path : files) {
    try {
      const Input input(path);
      if (!input.size()) return std::nullopt;
      total += *input.size();
    } catch (const InputFailure&) {
    }
  }
  return total;
}

bool isProgressShown(const Options& o) {
  if (o.progress != When::automatic) return o.progress == When::always;
  // The lines of the output would run into it.
  const bool isToStandardOutput = o.output.empty() || o.output == "-";
  const bool isOutputShown = !o.check && !o.inPlace && isToStandardOutput && isatty(1) == 1;
  return isatty(2) == 1 && !isOutputShown;
}

class Run {
 public:
  Run(EncodingConvertor& converter, const Options& options)
      : converter_(converter),
        options_(options),
        report_(options),
        progress_(isProgressShown(options),
                  isProgressShown(options) ? totalSize(options.files) : std::nullopt) {}

  Status convertAll() {
    try {
      options_.inPlace ? convertInPlace() : convertToOutput();
      report_.commit();
    } catch (const OutputFailure& failure) {
      progress_.clear();
      if (!failure.isQuiet) printMessage(failure.what());
      return Status::failure;
    }
    return status_;
  }

 private:
  void convertToOutput() {
    std::optional<Output> output;
    if (options_.output.empty()) {
      output.emplace();
    } else {
      output.emplace(options_.output, nullptr);
    }
    if (!options_.check) refuseSameFile(*output);
    if (report_.file()) refuseSameFile(*report_.file());
    bool isAnyRead = false;
    try {
      for (const std::string& path : options_.files) {
        isAnyRead |= convertOne(path, options_.check ? nullptr : &*output);
      }
    } catch (const StoppedAtLoss&) {
      if (!output->isDirect()) return;
    }
    if (options_.check) return;
    if (output->isDirect() || (isAnyRead && !isCutOff_)) {
      output->commit();
    } else {
      printMessage(options_.output + ": not put in place");
    }
  }

  void convertInPlace() {
    if (report_.file()) refuseSameFile(*report_.file());
    std::set<std::filesystem::path> seen;
    for (const std::string& path : options_.files) {
      const auto there = fileAt(path);
      if (!there || !S_ISREG(there->st_mode)) {
        fail(path, there ? "not a regular file" : "No such file or directory");
        continue;
      }
      // What has been converted is not in the encoding of the input any more.
      std::error_code error;
      if (!seen.insert(std::filesystem::canonical(path, error)).second) {
        fail(path, "given twice, replaced only once");
        continue;
      }
      Output output(path, &*there);
      const std::uint64_t lostBefore = lost_;
      try {
        if (!convertOne(path, &output)) continue;
      } catch (const StoppedAtLoss&) {
        return;
      }
      if (options_.failOnLoss && lost_ != lostBefore) {
        printMessage(path + ": left as it was");
      } else {
        output.commit(options_.suffix.empty() ? "" : path + options_.suffix);
      }
    }
  }

  // Converts one input; says what is wrong with it and returns false when it could not be read.
  bool convertOne(const std::string& path, Output* output) {
    try {
      Input input(path);
      if (input.isTerminal() && !options_.quiet) {
        printMessage("reading from the terminal; end with Ctrl-D");
      }
      convert(input, output);
      return true;
    } catch (const InputFailure& failure) {
      fail(nameOfInput(path), failure.what());
      return false;
    }
  }

  // An output that is an input would be destroyed, or be read for ever.
  void refuseSameFile(const Output& output) const {
    for (const std::string& path : options_.files) {
      const auto input = fileAt(path);
      if (input && S_ISREG(input->st_mode) && isSameFile(*input, output.status())) {
        throw OutputFailure(output.name() + ": is the input " + path +
                            " too, which would be destroyed; use -i to replace it");
      }
    }
  }

  void convert(Input& input, Output* output) {
    Chunker chunker([&](char* to, std::size_t size) { return input.read(to, size); });
    const Source source = sourceOf(chunker);
    const bool isFound = options_.from == Source::automatic;
    Pipeline pipeline(converter_, options_, source);
    chunker.setCut(source, pipeline.cut());
    report_.beginInput();
    LossReport losses(source, [&](const Loss& loss) {
      if (isFound && loss.reason == Reason::malformed) {
        throw InputFailure("line " + std::to_string(loss.line) + ", byte " +
                           std::to_string(loss.offset) + ": " + inHex(loss.bytes) + " is no " +
                           std::string(nameOf(source)) +
                           " although the text before it is; give the encoding with -f");
      }
      report_.add(input.name(), loss);
      if (options_.strict) throw StoppedAtLoss();
    });
    const bool wasCutOff = isCutOff_;
    try {
      std::string text;
      while (chunker.next()) {
        text.clear();
        chunker.use(pipeline.convert(chunker.piece(), chunker.isLast(), text, losses));
        if (output != nullptr) output->write(text);
        isCutOff_ = true;
        progress_.at(bytesBefore_ + losses.bytes());
      }
    } catch (const StoppedAtLoss&) {
      account(input, source, losses);
      throw;
    }
    isCutOff_ = wasCutOff;
    account(input, source, losses);
    bytesBefore_ += losses.bytes();
  }

  Source sourceOf(Chunker& chunker) {
    if (options_.from == Source::ucs2) return ucs2Order(chunker.lookAhead(2));
    if (options_.from != Source::automatic) return options_.from;
    const auto start = chunker.lookAhead(Chunker::kCapacity);
    const bool isWhole = start.size() < Chunker::kCapacity;
    const auto found = detect(converter_, start, isWhole);
    if (!found) throw InputFailure(adviceFor(converter_, start, isWhole));
    return *found;
  }

  void account(const Input& input, Source source, const LossReport& losses) {
    lost_ += losses.lost();
    if (losses.lost() != 0 && (options_.strict || options_.failOnLoss || options_.check)) {
      status_ = std::max(status_, Status::losses);
    }
    if (options_.quiet) return;
    progress_.clear();
    std::string start = input.name() + ": ";
    if (options_.verbose) start.append(nameOf(source)).append(", ");
    if (losses.lost() != 0) {
      printMessage(start + losses.summary());
    } else if (options_.verbose) {
      printMessage(start + std::to_string(losses.characters()) + " characters, none lost");
    }
  }

  void fail(const std::string& name, const std::string& what) {
    progress_.clear();
    printMessage(name + ": " + what);
    status_ = Status::failure;
  }

  EncodingConvertor& converter_;
  const Options& options_;
  ReportFile report_;
  Progress progress_;
  Status status_ = Status::done;
  bool isCutOff_ = false;  // the output holds a part of an input that could not be read to its end
  std::uint64_t lost_ = 0;
  std::uint64_t bytesBefore_ = 0;  // of the inputs that are done
};

}  // namespace

void printMessage(const std::string& text) { std::fprintf(stderr, "sgbk: %s\n", text.c_str()); }

Status convertFiles(EncodingConvertor& converter, const Options& options) {
  try {
    return Run(converter, options).convertAll();
  } catch (const OutputFailure& failure) {
    printMessage(failure.what());
    return Status::failure;
  }
}

}  // namespace cli
