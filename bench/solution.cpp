#include "solution.h"

#include <stdexcept>

#include "host/fmwrapper/registry.h"

namespace orlocal::bench {

void answerWith(std::u16string_view text, fmx::Data* result) {
  fmx::Exception x;
  fmx::Text* value = fmx::FM_Text_Constructor1(&x);
  fmx::FM_Text_AssignUnicodeWithLength(value, text.data(), static_cast<std::uint32_t>(text.size()), &x);
  fmx::FM_Data_SetAsText(result, value, fmx::FM_Data_GetLocale(result, &x), fmx::kText, &x);
  fmx::FM_Text_Delete(value, &x);
}

namespace {

fmx::Exception g_exception;

std::string ascii(std::u16string_view units) {
  std::string text;
  for (const char16_t unit : units) { text += unit < 0x80 ? static_cast<char>(unit) : '?'; }
  return text;
}

fmx::ExternalFunction registered(std::u16string_view name) {
  const auto entry = host::Registry::instance().function(name);
  if (!entry) { throw std::runtime_error("the plug-in did not register " + ascii(name)); }
  return entry->function;
}

void push(fmx::DataVect* vector, std::u16string_view text) {
  fmx::Data* data = fmx::FM_Data_Constructor1(&g_exception);
  answerWith(text, data);
  fmx::FM_DataVect_PushBack(vector, data, &g_exception);
  fmx::FM_Data_Delete(data, &g_exception);
}

}  // namespace

Call::Call(std::u16string_view function, std::initializer_list<std::u16string_view> arguments)
    : Call(registered(function), arguments) {}

Call::Call(fmx::ExternalFunction function, std::initializer_list<std::u16string_view> arguments)
    : m_function(function),
      m_environment(fmx::FM_ExprEnv_Constructor1(&g_exception)),
      m_arguments(fmx::FM_DataVect_Constructor1(&g_exception)),
      m_result(fmx::FM_Data_Constructor1(&g_exception)) {
  setTexts(arguments);
}

Call::~Call() {
  fmx::FM_Data_Delete(m_result, &g_exception);
  fmx::FM_DataVect_Delete(m_arguments, &g_exception);
  fmx::FM_ExprEnv_Delete(m_environment, &g_exception);
}

void Call::setTexts(std::initializer_list<std::u16string_view> arguments) {
  fmx::FM_DataVect_Clear(m_arguments, &g_exception);
  for (const auto argument : arguments) { push(m_arguments, argument); }
}

void Call::setLast(std::int32_t number) {
  fmx::FixPt* value = fmx::FM_FixPt_Constructor1(number, 16, &g_exception);
  fmx::Data* last = fmx::FM_DataVect_PopBack(m_arguments, &g_exception);
  fmx::FM_Data_SetAsNumber(last, value, fmx::kNumber, &g_exception);
  fmx::FM_DataVect_PushBack(m_arguments, last, &g_exception);
  fmx::FM_Data_Delete(last, &g_exception);
  fmx::FM_FixPt_Delete(value, &g_exception);
}

void Call::checked() {
  (*this)();
  if (text() == u"!!ERROR!!") {
    Call reason(u"Orlo_GetLastError", {});
    reason();
    throw std::runtime_error("a measured call failed: " + ascii(reason.text()));
  }
}

std::int32_t Call::number() const {
  return fmx::FM_FixPt_AsLong(fmx::FM_Data_GetAsNumber(m_result, &g_exception), &g_exception);
}

std::u16string Call::text() const {
  const fmx::Text* value = fmx::FM_Data_GetAsText(m_result, &g_exception);
  std::u16string units(fmx::FM_Text_GetSize(value, &g_exception), u'\0');
  fmx::FM_Text_GetUnicode(value, units.data(), 0, static_cast<std::uint32_t>(units.size()), &g_exception);
  return units;
}

std::unique_ptr<host::Plugin> startPlugin(const std::filesystem::path& file) {
  auto plugin = host::Plugin::load(file);
  if (!plugin) { throw std::runtime_error(plugin.error().message); }
  return std::move(*plugin);
}

}  // namespace orlocal::bench
