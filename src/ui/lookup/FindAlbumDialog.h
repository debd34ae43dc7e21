#pragma once

#include "ui/widgets/HouseDialog.h"

#include <QDialog>
#include <QPixmap>
#include <QString>

#include <vector>

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace waxline::ui {

// One release found, as the list shows it.
struct AlbumCandidate {
    QString title;   // "Artist - Album"
    QString details; // format, country, year, sides: already worded by the controller
    QString fit;     // the fit to the side, or empty while it is not known
    QPixmap thumbnail;
};

// "Find the album…": artist, album or barcode, Search, the releases found with their cover
// thumbnails, format, year and fit, and Use for the one chosen; afterwards the chosen cover
// and what was filled in. It only shows and asks: the controller searches, fits and fills.
// Main thread only.
class FindAlbumDialog : public HouseDialog {
    Q_OBJECT
public:
    explicit FindAlbumDialog(QWidget* parent = nullptr);

    void setQuery(const QString& artist, const QString& album, const QString& barcode);
    QString artist() const;
    QString album() const;
    QString barcode() const;

    // The list anew, or one row of it (its fit or thumbnail arrived).
    void setCandidates(const std::vector<AlbumCandidate>& candidates);
    void updateCandidate(int row, const AlbumCandidate& candidate);
    int chosenRow() const;
    // One line under the list: "Searching…", why nothing was found, what was filled in.
    void setStatus(const QString& text);
    QString status() const;
    // The chosen release's front cover, shown once the names are filled in.
    void showCover(const QPixmap& cover);
    // While the controller works the buttons wait.
    void setBusy(bool busy);

    QPushButton& searchButton() { return *search; }
    QPushButton& useButton() { return *use; }
    QListWidget& list() { return *candidates; }

Q_SIGNALS:
    void searchRequested();
    void useRequested(int row);

private:
    QLineEdit* artistField;
    QLineEdit* albumField;
    QLineEdit* barcodeField;
    QPushButton* search;
    QPushButton* use;
    QPushButton* close;
    QListWidget* candidates;
    QLabel* statusLine;
    QLabel* cover;
};

// The catalogue's text of a key, or the key itself when the catalogue has none.
QString catalogueText(const char* key);

} // namespace waxline::ui
