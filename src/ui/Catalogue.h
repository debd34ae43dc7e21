#pragma once

#include <QLocale>
#include <QString>

// The catalogue of "IDS_" keys: context "Localizable", the key as source text.
namespace waxline::ui {

// The text of a key in the installed catalogue, or a null string when the catalogue has
// none (Linguist hands back the source text, which is the key itself).
QString localizedKey(const QString& key);

// The text of a key, or the key itself where the catalogue has none, so that a gap shows.
QString textOrKey(const char* key);

// Installs the catalogue for the locale's language, English when there is none for it.
// Returns the language code installed ("en", "de").
QString installCatalogue(const QLocale& locale);

// Plain text of a catalogue value, which may be Qt rich text.
QString plainTextOf(const QString& richOrPlain);

// A caption as a screen reader says it: the mnemonic marks ("&Next") taken out, "&&" kept as "&".
QString withoutMnemonic(const QString& caption);

// A level or gain in tenths of a decibel with its sign, in the default locale ("+1,5" in German).
QString formatDecibels(double db);

} // namespace waxline::ui
