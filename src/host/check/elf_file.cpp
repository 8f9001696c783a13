#include "host/check/elf_file.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <string_view>

#include <elf.h>

#include "base/try.h"
#include "base/whole_input.h"

namespace orlocal::host::check {
namespace {

#if defined(__x86_64__)
constexpr std::uint16_t kMachine = EM_X86_64;
#elif defined(__aarch64__)
constexpr std::uint16_t kMachine = EM_AARCH64;
#else
constexpr std::uint16_t kMachine = EM_NONE;
#endif

/// Reads records of a file that may be anything: what lies outside it is absent.
class Bytes {
 public:
  explicit Bytes(std::string_view bytes) : m_bytes(bytes) {}

  template <class Record>
  std::optional<Record> at(std::uint64_t offset) const {
    if (offset > m_bytes.size() || m_bytes.size() - offset < sizeof(Record)) { return std::nullopt; }
    Record record;
    std::memcpy(&record, m_bytes.data() + offset, sizeof(Record));
    return record;
  }
  std::optional<std::string> text(std::uint64_t offset) const {
    const std::size_t end = m_bytes.find('\0', offset);
    if (offset >= m_bytes.size() || end == std::string_view::npos) { return std::nullopt; }
    return std::string(m_bytes.substr(offset, end - offset));
  }

 private:
  std::string_view m_bytes;
};

/// The dynamic section, and where addresses lie in the file.
class Dynamic {
 public:
  Dynamic(const Bytes& bytes, const Elf64_Ehdr& header) : m_bytes(bytes) {
    for (int i = 0; i < header.e_phnum; ++i) {
      const auto part = bytes.at<Elf64_Phdr>(header.e_phoff + static_cast<std::uint64_t>(i) * sizeof(Elf64_Phdr));
      if (!part) { return; }
      if (part->p_type == PT_LOAD) { m_loaded.push_back(*part); }
      if (part->p_type == PT_DYNAMIC) { m_dynamic = *part; }
      if (part->p_type == PT_GNU_STACK && (part->p_flags & PF_X) != 0) { executableStack = true; }
    }
    if (!m_dynamic) { return; }
    for (std::uint64_t at = 0; at + sizeof(Elf64_Dyn) <= m_dynamic->p_filesz; at += sizeof(Elf64_Dyn)) {
      const auto entry = bytes.at<Elf64_Dyn>(m_dynamic->p_offset + at);
      if (!entry || entry->d_tag == DT_NULL) { return; }
      entries.emplace(entry->d_tag, entry->d_un.d_val);
    }
  }

  std::optional<std::uint64_t> value(std::int64_t tag) const {
    const auto found = entries.find(tag);
    return found == entries.end() ? std::nullopt : std::optional(found->second);
  }
  /// Where an address lies in the file.
  std::optional<std::uint64_t> offsetOf(std::optional<std::uint64_t> address) const {
    if (!address) { return std::nullopt; }
    for (const Elf64_Phdr& part : m_loaded) {
      if (*address >= part.p_vaddr && *address - part.p_vaddr < part.p_filesz) {
        return *address - part.p_vaddr + part.p_offset;
      }
    }
    return std::nullopt;
  }
  std::string string(std::uint64_t at) const {
    const auto table = offsetOf(value(DT_STRTAB));
    return table ? m_bytes.text(*table + at).value_or("") : "";
  }

  std::multimap<std::int64_t, std::uint64_t> entries;
  bool executableStack = false;

 private:
  const Bytes& m_bytes;
  std::vector<Elf64_Phdr> m_loaded;
  std::optional<Elf64_Phdr> m_dynamic;
};

/// How many symbols there are: the table itself does not say.
std::uint64_t symbolCount(const Bytes& bytes, const Dynamic& dynamic) {
  if (const auto table = dynamic.offsetOf(dynamic.value(DT_HASH))) {
    return bytes.at<std::uint32_t>(*table + sizeof(std::uint32_t)).value_or(0);
  }
  const auto table = dynamic.offsetOf(dynamic.value(DT_GNU_HASH));
  if (!table) { return 0; }
  // Buckets name the first symbol of a chain, whose last one has the lowest bit set.
  const std::uint32_t buckets = bytes.at<std::uint32_t>(*table).value_or(0);
  const std::uint32_t first = bytes.at<std::uint32_t>(*table + 4).value_or(0);
  const std::uint32_t blooms = bytes.at<std::uint32_t>(*table + 8).value_or(0);
  const std::uint64_t bucketsAt = *table + 16 + std::uint64_t{blooms} * sizeof(std::uint64_t);
  std::uint64_t last = 0;
  for (std::uint64_t i = 0; i < buckets; ++i) {
    const auto symbol = bytes.at<std::uint32_t>(bucketsAt + i * 4);
    if (!symbol) { return 0; }
    last = std::max<std::uint64_t>(last, *symbol);
  }
  if (last < first) { return first; }
  const std::uint64_t chainsAt = bucketsAt + std::uint64_t{buckets} * 4;
  for (;; ++last) {
    const auto chained = bytes.at<std::uint32_t>(chainsAt + (last - first) * 4);
    if (!chained) { return 0; }
    if ((*chained & 1U) != 0) { return last + 1; }
  }
}

std::vector<std::string> exportedBy(const Bytes& bytes, const Dynamic& dynamic) {
  std::vector<std::string> names;
  const auto table = dynamic.offsetOf(dynamic.value(DT_SYMTAB));
  if (!table) { return names; }
  const std::uint64_t count = symbolCount(bytes, dynamic);
  for (std::uint64_t i = 1; i < count; ++i) {
    const auto symbol = bytes.at<Elf64_Sym>(*table + i * sizeof(Elf64_Sym));
    if (!symbol) { break; }
    const auto binding = ELF64_ST_BIND(symbol->st_info);
    const bool forOthers = binding == STB_GLOBAL || binding == STB_WEAK || binding == STB_GNU_UNIQUE;
    if (symbol->st_shndx != SHN_UNDEF && forOthers) { names.push_back(dynamic.string(symbol->st_name)); }
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> foldersIn(const std::string& path) {
  std::vector<std::string> folders;
  for (std::size_t begin = 0; begin <= path.size();) {
    const std::size_t end = std::min(path.find(':', begin), path.size());
    if (end > begin) { folders.push_back(path.substr(begin, end - begin)); }
    begin = end + 1;
  }
  return folders;
}

}  // namespace

Result<ElfFile> readElfFile(const std::filesystem::path& file) {
  ORLOCAL_TRY(const std::string content, readWholeFile(file));
  const Bytes bytes(content);
  const auto header = bytes.at<Elf64_Ehdr>(0);
  if (!header || std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0) {
    return failure(ErrorCode::kInvalid, file.string() + " is no ELF file");
  }
  ElfFile read;
  read.forThisMachine = header->e_ident[EI_CLASS] == ELFCLASS64 && header->e_ident[EI_DATA] == ELFDATA2LSB &&
                        header->e_machine == kMachine;
  read.isSharedObject = header->e_type == ET_DYN;
  if (!read.forThisMachine) { return read; }
  const Dynamic dynamic(bytes, *header);
  read.hasExecutableStack = dynamic.executableStack;
  read.hasTextRelocations =
      dynamic.value(DT_TEXTREL).has_value() || (dynamic.value(DT_FLAGS).value_or(0) & DF_TEXTREL) != 0;
  if (const auto name = dynamic.value(DT_SONAME)) { read.soname = dynamic.string(*name); }
  const auto [begin, end] = dynamic.entries.equal_range(DT_NEEDED);
  for (auto at = begin; at != end; ++at) { read.needed.push_back(dynamic.string(at->second)); }
  for (const std::int64_t tag : {DT_RUNPATH, DT_RPATH}) {
    if (const auto path = dynamic.value(tag)) {
      for (std::string& folder : foldersIn(dynamic.string(*path))) { read.runPath.push_back(std::move(folder)); }
    }
  }
  read.exported = exportedBy(bytes, dynamic);
  return read;
}

}  // namespace orlocal::host::check
