#include "accounts/sync/sync_context.h"

#include "base/translation.h"
#include "base/try.h"
#include "store/edits/item_writer.h"

namespace orlocal::accounts {

Result<std::unique_ptr<store::ItemWriter>> SyncContext::startWriting() {
  ORLOCAL_TRY(auto writer, store.startWriting());
  ORLOCAL_TRY(const bool same, writer->comesAfter(position));
  if (!same) {
    return failure(ErrorCode::kRefused,
                   tr("The calendar store was replaced while it was synced, as by a backup that was "
                      "restored; the next sync goes by what it holds now."));
  }
  position = writer->position();
  return writer;
}

}  // namespace orlocal::accounts
