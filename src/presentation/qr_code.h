// QR codes (ISO/IEC 18004) at correction level M, as pictures of one pixel a module. Any thread.
#pragma once

#include <QImage>
#include <QString>

namespace brimwatch {

// Black on white, with a border of one module; null if the text is empty or too long. The code
// carries the UTF-8 bytes of the text.
QImage qrCode(const QString& text);

// How many points a module is wide when a picture of this width is drawn: a whole number, so that
// the modules stay sharp.
int qrCodeScale(int width);

}  // namespace brimwatch
