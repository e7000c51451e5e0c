// What a page says of its own encoding: <meta charset>, http-equiv, and the XML declaration.

#ifndef SGBK_TEXT_DECLARATION_H
#define SGBK_TEXT_DECLARATION_H

#include <string>
#include <string_view>

namespace sgbk::text {

// Declarations count in the first bytes of a page only.
inline constexpr std::size_t kDeclarationBytes = 1024;

// The first encoding declared in `head`, as it is written there; empty when there is none.
std::string_view declaredEncoding(std::string_view head);

// `head` with `name` in place of each encoding that is declared.
std::string withDeclared(std::string_view head, std::string_view name);

}  // namespace sgbk::text

#endif
