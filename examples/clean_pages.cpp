// Pages in any of the encodings, each by its name, to clean UTF-8; what was lost goes to stderr.
//
//     clean_pages page... > pages.utf8.html

#include <fstream>
#include <iostream>
#include <iterator>
#include <sgbk/text.hpp>

int main(int argc, char** argv) {
  try {
    sgbk::Converter converter("auto", "utf-8");
    converter.set("entities").set("html").set("trim-punct").set("losses");
    for (int i = 1; i < argc; ++i) {
      std::ifstream file(argv[i], std::ios::binary);
      const std::string page(std::istreambuf_iterator<char>(file), {});
      std::cout << converter.convert(page.data(), page.size(), true);

      size_t count;
      const sgbk_loss* const losses = sgbk_losses(converter.get(), &count);
      for (const sgbk_loss* loss = losses; loss != losses + count; ++loss) {
        std::cerr << argv[i] << ": line " << loss->line << ", byte " << loss->offset << " is "
                  << sgbk_reason_name(loss->reason) << '\n';
      }
      sgbk_reset(converter.get());
    }
  } catch (const sgbk::Error& error) {
    std::cerr << "clean_pages: " << error.what() << '\n';
    return 1;
  }
}
