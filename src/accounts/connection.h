#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "accounts/account_book.h"
#include "accounts/transport/curl_transport.h"
#include "accounts/transport/secret.h"

namespace orlocal::accounts {

/// How the server of an account is reached: as its settings say, with the password that belongs to it. `typed` is one
/// that was asked for and is not kept yet.
std::unique_ptr<Transport> connectionFor(const Account& account, const SecretsFile& secrets,
                                         const std::atomic<bool>* stop,
                                         const std::optional<std::string>& typed = std::nullopt);

}  // namespace orlocal::accounts
