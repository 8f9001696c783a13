#include "host/calc/parser.h"

#include <vector>

#include "base/try.h"
#include "host/calc/expression_parser.h"
#include "host/calc/token_stream.h"

namespace orlocal::host::calc {

Result<NodePtr> parse(std::string_view source, const FunctionLibrary& library) {
  // What is no token anywhere is said before what is no calculation.
  ORLOCAL_CHECK(TokenStream::check(source));
  const std::vector<Signature> signatures = library.signatures();
  return ExpressionParser(source, signatures).parseAll();
}

}  // namespace orlocal::host::calc
