#include "platform/linux/url_text.h"

#include <gtest/gtest.h>

namespace orlocal {
namespace {

struct UrlCase {
  const char* stored;
  const char* told;
};

class UrlText : public testing::TestWithParam<UrlCase> {};

TEST_P(UrlText, IsToldAsAUri) { EXPECT_EQ(urlText(std::string_view(GetParam().stored)), GetParam().told); }

TEST_P(UrlText, IsToldTheSameOnceItIsAUri) {
  const std::string told = GetParam().told;
  EXPECT_EQ(urlText(std::string_view(told)), told);
}

INSTANTIATE_TEST_SUITE_P(
    Encoded, UrlText,
    testing::Values(UrlCase{"https://example.org/a?b=c&d=(e)#f", "https://example.org/a?b=c&d=(e)#f"},
                    UrlCase{"https://example.org/a b", "https://example.org/a%20b"},
                    UrlCase{"https://example.org/a b%20c", "https://example.org/a%20b%20c"},
                    UrlCase{"https://example.org/ü", "https://example.org/%C3%BC"},
                    UrlCase{"https://bücher.example/", "https://b%C3%BCcher.example/"},
                    UrlCase{"https://example.org/\"<{|}>^`\\", "https://example.org/%22%3C%7B%7C%7D%3E%5E%60%5C"},
                    UrlCase{"https://example.org/100%", "https://example.org/100%25"},
                    UrlCase{"https://example.org/%zz", "https://example.org/%25zz"},
                    UrlCase{"https://example.org/#a#b", "https://example.org/#a%23b"},
                    UrlCase{"https://example.org/[1]", "https://example.org/%5B1%5D"},
                    UrlCase{"https://me@[2001:db8::1]:8080/[1]", "https://me@[2001:db8::1]:8080/%5B1%5D"},
                    UrlCase{"mailto:Ü <a@example.org>", "mailto:%C3%9C%20%3Ca@example.org%3E"},
                    UrlCase{"x-room+1.2:é", "x-room+1.2:%C3%A9"},
                    UrlCase{"www.example.org/ü", "www.example.org/%C3%BC"}, UrlCase{"", ""}));

INSTANTIATE_TEST_SUITE_P(Readable, UrlText,
                         testing::Values(UrlCase{"see the wiki, page ü", "see the wiki, page ü"},
                                         UrlCase{"Note: room 5", "Note: room 5"},
                                         UrlCase{"https://[2001:db8::1/a b", "https://[2001:db8::1/a b"},
                                         UrlCase{"https://example]/a b", "https://example]/a b"},
                                         UrlCase{"https://example.org:port/a b", "https://example.org:port/a b"}));

TEST(UrlTexts, OfNothingIsNothing) { EXPECT_EQ(urlText(OptionalText()), std::nullopt); }

}  // namespace
}  // namespace orlocal
