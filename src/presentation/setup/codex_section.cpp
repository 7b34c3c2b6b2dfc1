#include "presentation/setup/codex_section.h"

#include "platform/spawn.h"
#include "presentation/translated.h"

namespace brimwatch {

CodexSection::CodexSection(HelperModel& model, FileManager& fileManager)
    : model_(model), fileManager_(fileManager) {
    connect(&model, &HelperModel::codexEnabledChanged, this, &CodexSection::isEnabledChanged);
    connect(&model, &HelperModel::codexStatusChanged, this, &CodexSection::statusChanged);
    connect(&model, &HelperModel::languageChanged, this, &CodexSection::statusChanged);
}

QString CodexSection::status() const {
    const std::optional<std::string>& status = model_.codexStatus();
    return status ? translated(*status) : QString();
}

void CodexSection::update() {
    accounts_.setAccounts(codexAccountRows(model_));
}

void CodexSection::setEnabled(bool enabled) {
    model_.setCodexEnabled(enabled);
}

void CodexSection::connectAll() {
    model_.connectCodex();
}

void CodexSection::receiveNow() {
    spawn(model_.pollCodex());
}

void CodexSection::setAccount(int row, bool on) {
    const auto account = accounts_.find(row, model_.codexAccounts());
    if (account) model_.setCodexAccount(*account, on);
}

void CodexSection::reveal(int row) {
    const auto account = accounts_.find(row, model_.codexAccounts());
    if (account) fileManager_.reveal(account->directory);
}

}  // namespace brimwatch
