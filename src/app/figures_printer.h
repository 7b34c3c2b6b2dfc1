// Prints the figures of a model to standard output whenever they change.
#pragma once

#include <QTimer>
#include <string>

#include "core/helper_model.h"

namespace brimwatch {

// Prints at once, and after each turn of the event loop in which the title, the gauge or a card
// changed. The model must outlive it. Main thread.
class FiguresPrinter {
  public:
    explicit FiguresPrinter(HelperModel& model);
    FiguresPrinter(const FiguresPrinter&) = delete;
    FiguresPrinter& operator=(const FiguresPrinter&) = delete;
    ~FiguresPrinter() = default;

  private:
    void print();

    HelperModel& model_;
    QTimer soon_;
    std::string printed_;
};

}  // namespace brimwatch
