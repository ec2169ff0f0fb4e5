#include "framework/HxToken.h"

std::string_view HxToken::namespaceUri() const {
  const std::string::size_type hash = text_.rfind('#');
  if (hash == std::string::npos) return std::string_view();
  return std::string_view(text_.data(), hash + 1);
}

std::string_view HxToken::localName() const {
  const std::string::size_type hash = text_.rfind('#');
  if (hash == std::string::npos) return std::string_view(text_);
  return std::string_view(text_).substr(hash + 1);
}
