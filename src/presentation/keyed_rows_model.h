// A list for views whose rows are known by keys.
//
// A new state becomes the fewest changes that lead to it: rows that stay are not touched, and of a
// row that changed only the roles that did. Main thread.
#pragma once

#include <QAbstractListModel>
#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>
#include <vector>

namespace brimwatch {

class KeyedRowsModel : public QAbstractListModel {
    Q_OBJECT

  public:
    struct Row {
        QString key;
        QVariantList values;  // one for each role, in their order
    };

    explicit KeyedRowsModel(QList<QByteArray> roles);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

  protected:
    // From top to bottom. Two with one key count as different rows.
    void setRows(std::vector<Row> rows);

  private:
    using Keys = std::vector<QString>;

    static void makeDistinct(std::vector<Row>& rows);
    int rowOf(const QString& key) const;  // -1 if there is none
    void removeAllBut(const Keys& keys);
    void arrange(const Keys& keys);
    void moveRow(int row, int place);
    Keys restingKeys(const Keys& keys) const;
    void insertRow(int row, Row inserted);
    void updateRow(int row, const QVariantList& values);

    QList<QByteArray> roles_;
    std::vector<Row> rows_;
};

}  // namespace brimwatch
