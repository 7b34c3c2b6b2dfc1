#include "app/figures_printer.h"

#include <array>

#include "app/figures_text.h"
#include "platform/posix/standard_streams.h"

namespace brimwatch {

FiguresPrinter::FiguresPrinter(HelperModel& model) : model_(model) {
    soon_.setSingleShot(true);
    QObject::connect(&soon_, &QTimer::timeout, &soon_, [this] { print(); });
    const auto printSoon = [this] { soon_.start(0); };
    for (const auto changed :
         std::to_array({&HelperModel::limitsChanged, &HelperModel::menuTitleChanged,
                        &HelperModel::menuGaugeChanged, &HelperModel::menuOrderChanged,
                        &HelperModel::usageDisplayChanged, &HelperModel::receivedCodexChanged})) {
        QObject::connect(&model, changed, &soon_, printSoon);
    }
    print();
}

void FiguresPrinter::print() {
    std::string text = figuresText(model_);
    if (text == printed_) return;
    printed_ = std::move(text);
    writeStandardOutput(printed_);
}

}  // namespace brimwatch
