// Qt 6.4 keeps the textures of a window's pictures when its software renderer ends: one for each
// picture, for as long as the process lives. The leak check knows them by this.
extern "C" const char* __lsan_default_suppressions();  // NOLINT: its name

extern "C" const char* __lsan_default_suppressions() {  // NOLINT: its name
    return "leak:QSGTexture::QSGTexture\n";
}
