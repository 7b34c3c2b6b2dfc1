// What the sheet of the link to an Android phone shows, and what its buttons do.
//
// The link text is that of the key in force, which whoever reads it can use; it is shown and copied
// and goes nowhere else. Main thread.
#pragma once

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>
#include <exception>

#include "platform/clipboard.h"
#include "platform/sleep.h"
#include "publish/publishers/phone_link_publisher.h"

namespace brimwatch {

class PhoneLinkSheet final : public QObject {
    Q_OBJECT
    // Empty where there is no key.
    Q_PROPERTY(QString linkText READ linkText NOTIFY linkTextChanged)
    Q_PROPERTY(bool isChanging READ isChanging NOTIFY isChangingChanged)
    Q_PROPERTY(bool isCopied READ isCopied NOTIFY isCopiedChanged)
    // What went wrong; empty if nothing did.
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged)

  public:
    enum class Action { make, rotate, disconnect };

    // What is referred to must outlive the sheet.
    PhoneLinkSheet(PhoneLinkPublisher& publisher, Clipboard& clipboard, Sleep sleep);

    QString linkText() const;
    bool isChanging() const { return publisher_.isChanging(); }
    bool isCopied() const { return isCopied_; }
    const QString& problem() const { return problem_; }

    // To be called when it is shown: nothing stays of what a former showing told.
    Q_INVOKABLE void appear();
    Q_INVOKABLE void copy();
    Q_INVOKABLE void rotate();
    Q_INVOKABLE void disconnectLink();

    // How the user is told of what one of the publisher's operations threw.
    static QString problemText(const std::exception_ptr& thrown, Action action);

  signals:
    void linkTextChanged();
    void isChangingChanged();
    void isCopiedChanged();
    void problemChanged();
    // There is nothing more to show.
    void dismissed();

  private:
    using Sheet = QPointer<PhoneLinkSheet>;
    static QCoro::Task<> rotateLink(Sheet sheet);
    static QCoro::Task<> endLink(Sheet sheet);
    static QCoro::Task<> forgetCopy(Sheet sheet, Sleep sleep);
    void setProblem(const QString& problem);
    void setCopied(bool isCopied);

    PhoneLinkPublisher& publisher_;
    Clipboard& clipboard_;
    Sleep sleep_;
    QString problem_;
    bool isCopied_ = false;
};

}  // namespace brimwatch
