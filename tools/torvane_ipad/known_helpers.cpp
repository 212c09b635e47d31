#include "torvane_ipad/known_helpers.h"

#include <algorithm>

#include "protocol/json.h"
#include "torvane_ipad/private_files.h"

namespace torvane::ipad {
namespace {

constexpr std::size_t kMostFileSize = 1024 * 1024;

std::optional<KnownHelper> parseHelper(const JsonValue& value) {
  const auto* object = value.if_object();
  if (object == nullptr) return std::nullopt;
  const auto address = stringMember(*object, "address");
  const auto fingerprint = stringMember(*object, "fingerprint");
  if (!address || !fingerprint || !isFingerprint(*fingerprint)) return std::nullopt;
  return KnownHelper{*address, stringMember(*object, "name").value_or(""), *fingerprint};
}

}  // namespace

bool isFingerprint(std::string_view text) {
  return text.size() == 64 && text.find_first_not_of("0123456789abcdef") == text.npos;
}

std::optional<KnownHelpers> KnownHelpers::parse(std::string_view text) {
  const auto document = parseJsonObject(text);
  const auto* list = document ? document->if_contains("helpers") : nullptr;
  if (list == nullptr || !list->is_array()) return std::nullopt;
  KnownHelpers known;
  for (const JsonValue& value : list->get_array()) {
    auto helper = parseHelper(value);
    if (!helper) return std::nullopt;
    known.helpers_.push_back(std::move(*helper));
  }
  return known;
}

std::string KnownHelpers::serialized() const {
  JsonArray list;
  for (const KnownHelper& helper : helpers_) {
    list.push_back(JsonObject{
        {"address", helper.address}, {"name", helper.name}, {"fingerprint", helper.fingerprint}});
  }
  return serializeJson({{"helpers", std::move(list)}}).value_or("{\"helpers\":[]}") + "\n";
}

const KnownHelper* KnownHelpers::find(std::string_view address) const {
  const auto found = std::ranges::find(helpers_, address, &KnownHelper::address);
  return found == helpers_.end() ? nullptr : &*found;
}

const KnownHelper* KnownHelpers::withFingerprint(std::string_view fingerprint) const {
  const auto found = std::ranges::find(helpers_, fingerprint, &KnownHelper::fingerprint);
  return found == helpers_.end() ? nullptr : &*found;
}

std::vector<std::string> KnownHelpers::fingerprints() const {
  std::vector<std::string> all;
  for (const KnownHelper& helper : helpers_) all.push_back(helper.fingerprint);
  return all;
}

const KnownHelper* KnownHelpers::latest() const {
  return helpers_.empty() ? nullptr : &helpers_.front();
}

void KnownHelpers::remember(KnownHelper helper) {
  std::erase_if(helpers_,
                [&](const auto& known) { return known.fingerprint == helper.fingerprint; });
  helpers_.insert(helpers_.begin(), std::move(helper));
}

bool KnownHelpers::forget(std::string_view address) {
  return std::erase_if(helpers_, [&](const auto& known) { return known.address == address; }) > 0;
}

std::filesystem::path knownHelpersFile() {
  return dataFolder() / "known-helpers.json";
}

std::optional<KnownHelpers> loadKnownHelpers(const std::filesystem::path& file) {
  std::error_code error;
  if (!std::filesystem::exists(file, error)) return KnownHelpers{};
  const auto text = readFile(file, kMostFileSize);
  return text ? KnownHelpers::parse(*text) : std::nullopt;
}

}  // namespace torvane::ipad
