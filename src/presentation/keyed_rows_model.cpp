#include "presentation/keyed_rows_model.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

namespace brimwatch {
namespace {

constexpr int firstRole = Qt::UserRole + 1;

QList<int> changedRoles(const QVariantList& former, const QVariantList& values) {
    QList<int> changed;
    for (qsizetype index = 0; index < values.size(); ++index) {
        if (former[index] != values[index]) changed.append(firstRole + static_cast<int>(index));
    }
    return changed;
}

// The places of one longest rising row among the numbers, which are all different.
std::vector<std::size_t> longestRise(const std::vector<std::ptrdiff_t>& numbers) {
    constexpr std::size_t none = -1;
    std::vector<std::size_t> length(numbers.size(), 1);
    std::vector<std::size_t> before(numbers.size(), none);
    for (std::size_t last = 0; last < numbers.size(); ++last) {
        for (std::size_t place = 0; place < last; ++place) {
            if (numbers[place] > numbers[last] || length[place] < length[last]) continue;
            length[last] = length[place] + 1;
            before[last] = place;
        }
    }
    std::vector<std::size_t> rise;
    const auto longest = std::max_element(length.begin(), length.end());
    std::size_t place =
        longest == length.end() ? none : static_cast<std::size_t>(longest - length.begin());
    for (; place != none; place = before[place])
        rise.push_back(place);
    return rise;
}

bool contains(const std::vector<QString>& keys, const QString& key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

}  // namespace

KeyedRowsModel::KeyedRowsModel(QList<QByteArray> roles) : roles_(std::move(roles)) {}

void KeyedRowsModel::setRows(std::vector<Row> rows) {
    makeDistinct(rows);
    Keys keys;
    std::transform(rows.begin(), rows.end(), std::back_inserter(keys),
                   [](const Row& row) { return row.key; });
    removeAllBut(keys);
    arrange(keys);
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const int row = static_cast<int>(index);
        if (rowOf(keys[index]) == -1) {
            insertRow(row, std::move(rows[index]));
        } else {
            updateRow(row, rows[index].values);
        }
    }
}

int KeyedRowsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant KeyedRowsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) return {};
    if (role < firstRole || role >= firstRole + roles_.size()) return {};
    return rows_[static_cast<std::size_t>(index.row())].values[role - firstRole];
}

QHash<int, QByteArray> KeyedRowsModel::roleNames() const {
    QHash<int, QByteArray> names;
    for (qsizetype index = 0; index < roles_.size(); ++index)
        names.insert(firstRole + static_cast<int>(index), roles_[index]);
    return names;
}

void KeyedRowsModel::makeDistinct(std::vector<Row>& rows) {
    std::map<QString, int> counts;
    for (Row& row : rows)
        row.key += '#' + QString::number(counts[row.key]++);
}

int KeyedRowsModel::rowOf(const QString& key) const {
    const auto row = std::find_if(rows_.begin(), rows_.end(),
                                  [&key](const Row& each) { return each.key == key; });
    return row == rows_.end() ? -1 : static_cast<int>(row - rows_.begin());
}

void KeyedRowsModel::removeAllBut(const Keys& keys) {
    for (int row = rowCount() - 1; row >= 0; --row) {
        if (contains(keys, rows_[static_cast<std::size_t>(row)].key)) continue;
        beginRemoveRows({}, row, row);
        rows_.erase(rows_.begin() + row);
        endRemoveRows();
    }
}

// Every row that does not rest comes behind the one that precedes it in `keys`.
void KeyedRowsModel::arrange(const Keys& keys) {
    const Keys resting = restingKeys(keys);
    int place = 0;
    for (const QString& key : keys) {
        const int row = rowOf(key);
        if (row == -1) continue;
        if (!contains(resting, key)) moveRow(row, place);
        place = rowOf(key) + 1;
    }
}

void KeyedRowsModel::moveRow(int row, int place) {
    if (!beginMoveRows({}, row, row, {}, place)) return;
    const auto begin = rows_.begin();
    if (row < place) {
        std::rotate(begin + row, begin + row + 1, begin + place);
    } else {
        std::rotate(begin + place, begin + row, begin + row + 1);
    }
    endMoveRows();
}

// As many rows as can stay where they are while the others move.
KeyedRowsModel::Keys KeyedRowsModel::restingKeys(const Keys& keys) const {
    std::vector<std::ptrdiff_t> places;
    std::transform(rows_.begin(), rows_.end(), std::back_inserter(places), [&keys](const Row& row) {
        return std::find(keys.begin(), keys.end(), row.key) - keys.begin();
    });
    Keys resting;
    for (const std::size_t row : longestRise(places))
        resting.push_back(rows_[row].key);
    return resting;
}

void KeyedRowsModel::insertRow(int row, Row inserted) {
    beginInsertRows({}, row, row);
    rows_.insert(rows_.begin() + row, std::move(inserted));
    endInsertRows();
}

void KeyedRowsModel::updateRow(int row, const QVariantList& values) {
    QVariantList& former = rows_[static_cast<std::size_t>(row)].values;
    const QList<int> changed = changedRoles(former, values);
    if (changed.isEmpty()) return;
    former = values;
    emit dataChanged(index(row), index(row), changed);
}

}  // namespace brimwatch
