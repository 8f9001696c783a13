#include "host/commands/transfer/file_kind.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "base/text.h"
#include "base/translation.h"

namespace orlocal::host {
namespace {

using namespace std::string_view_literals;

/// How files of other programs begin.
struct Signature {
  std::size_t at;
  std::string_view bytes;
  std::string_view looksLike;
  FileKind kind = FileKind::kOther;
};
constexpr Signature kSignatures[] = {
    {0, "PK\x03\x04"sv, translatable("a zip archive"), FileKind::kZip},
    {0, "PK\x05\x06"sv, translatable("an empty zip archive"), FileKind::kZip},
    {0, "\x1f\x8b"sv, translatable("a gzip file"), FileKind::kGzip},
    {257, "ustar"sv, translatable("a tar archive; unpack it first")},
    {0, "BZh"sv, translatable("a bzip2 file; unpack it first")},
    {0,
     "\xfd"
     "7zXZ\0"sv,
     translatable("an xz file; unpack it first")},
    {0, "\x28\xb5\x2f\xfd"sv, translatable("a zstd file; unpack it first")},
    {0, "7z\xbc\xaf\x27\x1c"sv, translatable("a 7z archive; unpack it first")},
    {0, "Rar!\x1a\x07"sv, translatable("a rar archive; unpack it first")},
    {0,
     "\x7f"
     "ELF"sv,
     translatable("a program (ELF)")},
    {0, "MZ"sv, translatable("a program (Windows)")},
    {0, "#!"sv, translatable("a script")},
    {0, "%PDF-"sv, translatable("a PDF document")},
    {0, "{\\rtf"sv, translatable("an RTF document")},
    {0, "\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1"sv,
     translatable("an Office document or an Outlook message; save it as .ics")},
    {0, "\x21\x42\x44\x4e"sv, translatable("an Outlook data file (.pst); export its calendar as .ics")},
    {0, "\x89PNG\r\n\x1a\n"sv, translatable("a picture (PNG)")},
    {0, "\xff\xd8\xff"sv, translatable("a picture (JPEG)")},
    {0, "GIF8"sv, translatable("a picture (GIF)")},
    {8, "WEBP"sv, translatable("a picture (WebP)")},
    {0, "SQLite format 3\0"sv, translatable("a SQLite database; a backup of ours comes back by `orlocal restore`")},
};

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
/// Where what a file is shows: calendars begin with BEGIN, some after a few lines of something else.
constexpr std::size_t kLook = std::size_t{1} << 20;

bool startsNoCase(std::string_view text, std::string_view begin) {
  return equalsNoCase(text.substr(0, begin.size()), begin);
}

/// What stands after the first "BEGIN:" at the start of a line; empty when there is none.
std::string_view firstComponent(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    std::string_view line = text.substr(at, text.find_first_of("\r\n", at) - at);
    at += line.size() + 1;
    line = trimmed(line);
    constexpr std::string_view kBegin = "BEGIN:";
    if (startsNoCase(line, kBegin)) { return line.substr(kBegin.size()); }
  }
  return {};
}

/// UTF-16 with a mark at its beginning, as far as it is ASCII.
std::string plainText(std::string_view bytes) {
  std::string text(bytes.substr(2));
  std::erase(text, '\0');
  return text;
}

std::string_view lookOfText(std::string_view text) {
  const std::string_view begin = trimmed(text, " \t\r\n");
  if (begin.empty()) { return translatable("a file of blanks"); }
  for (const std::string_view tag : {"<!DOCTYPE html"sv, "<html"sv, "<head"sv, "<body"sv}) {
    if (startsNoCase(begin, tag)) {
      return translatable("a web page (HTML), perhaps a login page; get the calendar's own address");
    }
  }
  if (begin.front() == '<') { return translatable("XML or HTML"); }
  if (begin.front() == '{' || begin.front() == '[') { return "JSON"; }
  if (startsNoCase(begin, "From ") || startsNoCase(begin, "Received:") || startsNoCase(begin, "Return-Path:") ||
      startsNoCase(begin, "MIME-Version:")) {
    return translatable("a mail message; save the calendar that is attached to it");
  }
  return translatable("text of another kind");
}

}  // namespace

RecognisedFile recognised(std::string_view bytes) {
  if (bytes.empty()) { return {FileKind::kOther, translatable("an empty file")}; }
  const auto* found = std::ranges::find_if(kSignatures, [&](const Signature& signature) {
    return bytes.size() >= signature.at && bytes.substr(signature.at).starts_with(signature.bytes);
  });
  if (found != std::end(kSignatures)) { return {found->kind, std::string(found->looksLike)}; }
  std::string_view text = bytes.substr(0, kLook);
  std::string plain;
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
    plain = plainText(text);
    text = plain;
  } else if (text.starts_with(kByteOrderMark)) {
    text.remove_prefix(kByteOrderMark.size());
  }
  const std::string_view component = firstComponent(text);
  if (startsNoCase(component, "VCARD")) { return {FileKind::kCards, translatable("address cards (vCard)")}; }
  // What is larger than the look is for the reader to judge.
  if (!component.empty() || bytes.size() > kLook) { return {FileKind::kCalendar, translatable("a calendar file")}; }
  if (text.substr(0, 4096).find('\0') != std::string_view::npos) {
    return {FileKind::kOther, translatable("binary data")};
  }
  return {FileKind::kOther, std::string(lookOfText(text))};
}

bool saysItIsACalendar(std::string_view name) {
  const auto endsWith = [&](std::string_view end) {
    return name.size() > end.size() && equalsNoCase(name.substr(name.size() - end.size()), end);
  };
  if (endsWith(".gz")) { name.remove_suffix(3); }
  constexpr std::array kEndings{".ics"sv, ".ical"sv, ".icalendar"sv, ".ifb"sv, ".vcs"sv, ".vcf"sv, ".vcard"sv};
  return std::ranges::any_of(kEndings, endsWith);
}

}  // namespace orlocal::host
