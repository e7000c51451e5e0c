#include "conversions.h"

#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <sstream>

#include "options.h"
#include "pipeline.h"
#include "support/operations.h"

namespace cli_test {
namespace {

EncodingConvertor& converter() {
  EncodingConvertor::initializeInstance(nullptr);
  return *EncodingConvertor::getInstance();
}

cli::Options parsed(const std::string& options) {
  std::istringstream in("sgbk " + options);
  Words words(std::istream_iterator<std::string>(in), {});
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  optind = 0;
  return cli::parseOptions(static_cast<int>(words.size()), arguments.data());
}

}  // namespace

Converted convert(const std::string& text, const std::string& options, std::size_t mostRead,
                  std::size_t capacity) {
  std::size_t at = 0;
  const auto read = [&](char* to, std::size_t size) {
    const std::size_t given = text.copy(to, std::min(size, mostRead), at);
    at += given;
    return given;
  };
  const cli::Options chosen = parsed(options);
  cli::Pipeline pipeline(converter(), chosen, chosen.from);
  cli::Chunker chunker(read, capacity);
  chunker.setCut(chosen.from, pipeline.cut());
  Converted result;
  std::vector<cli::Loss> found;
  cli::LossReport losses(chosen.from, [&](const cli::Loss& loss) { found.push_back(loss); });
  while (chunker.next()) {
    chunker.use(pipeline.convert(chunker.piece(), chunker.isLast(), result.text, losses));
  }
  std::ranges::stable_sort(found, {}, &cli::Loss::offset);
  for (const cli::Loss& loss : found) {
    result.losses += std::to_string(loss.line) + ":" + std::to_string(loss.offset) + ":" +
                     cli::inHex(loss.bytes) + ":" + std::string(nameOf(loss.reason)) + " ";
  }
  result.summary = losses.summary();
  return result;
}

std::string byLibrary(const std::string& operation, const std::string& text, int capacity) {
  converter();
  const auto& found = sgbk_test::operationNamed(operation);
  const auto size = static_cast<int>(text.size());
  if (capacity < 0) capacity = found.enough(text.size());
  std::string dest(static_cast<std::size_t>(capacity * found.elementSize()), '\0');
  const long written = found.call(text.data(), size, dest.data(), capacity);
  dest.resize(static_cast<std::size_t>(written * found.elementSize()));
  return dest;
}

std::string randomText(const Words& words, std::size_t size, std::mt19937& random) {
  std::string text;
  while (text.size() < size) text += words[random() % words.size()];
  return text;
}

}  // namespace cli_test
