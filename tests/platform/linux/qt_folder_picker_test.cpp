#include "platform/linux/qt_folder_picker.h"

#include <QWindow>

#include "harness/temporary_folder.h"
#include "platform/linux/folders_fixture.h"

namespace brimwatch {
namespace {

using Folder = std::optional<std::string>;

class QtFolderPickerTest : public test::FoldersTest {
  protected:
    void SetUp() override {
        test::FoldersTest::SetUp();
        window_ = std::make_unique<QWindow>();
        picker_.emplace();
    }
    void TearDown() override {
        picker_.reset();
        window_.reset();
        test::FoldersTest::TearDown();
    }
    void pick(const QString& title = "title") {
        picker_->pick(*window_, title, [this](Folder folder) { answers_.push_back(folder); });
    }

    test::TemporaryFolder folder_;
    std::unique_ptr<QWindow> window_;
    std::vector<Folder> answers_;
    std::optional<QtFolderPicker> picker_;
};

TEST_F(QtFolderPickerTest, ShowsFoldersOnlyAndHiddenOnesToo) {
    pick("Claude");
    QFileDialog& dialog = *picker_->dialog();
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(dialog.windowTitle(), "Claude");
    EXPECT_EQ(dialog.fileMode(), QFileDialog::Directory);
    EXPECT_TRUE(dialog.testOption(QFileDialog::ShowDirsOnly));
    EXPECT_TRUE(dialog.filter().testFlag(QDir::Hidden));
    EXPECT_EQ(dialog.directory().absolutePath(), QDir::homePath());
    EXPECT_EQ(dialog.windowHandle()->transientParent(), window_.get());
}

TEST_F(QtFolderPickerTest, GivesTheFolderThatTheUserChose) {
    pick();
    picker_->dialog()->selectFile(QString::fromStdString(folder_.path()));
    static_cast<QDialog*>(picker_->dialog())->done(QDialog::Accepted);
    EXPECT_EQ(answers_, std::vector<Folder>{folder_.path()});
    EXPECT_FALSE(picker_->dialog()->isVisible());
}

TEST_F(QtFolderPickerTest, GivesNothingIfTheUserClosesIt) {
    pick();
    picker_->dialog()->close();
    EXPECT_EQ(answers_, std::vector<Folder>{std::nullopt});
}

TEST_F(QtFolderPickerTest, DropsTheFormerQuestionForANewOne) {
    pick("former");
    pick("new");
    EXPECT_EQ(picker_->dialog()->windowTitle(), "new");
    picker_->dialog()->reject();
    EXPECT_EQ(answers_, std::vector<Folder>{std::nullopt});
}

TEST_F(QtFolderPickerTest, SaysNothingWhenItGoes) {
    pick();
    picker_.reset();
    EXPECT_TRUE(answers_.empty());
}

}  // namespace
}  // namespace brimwatch
