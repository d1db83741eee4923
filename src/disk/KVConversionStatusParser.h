#pragma once

#include <QList>
#include <QString>
#include <QStringView>

// What `diskutil cs list` says about one logical volume's conversion. Values
// that the listing does not show are empty.
struct KVConversionStatus
{
    QString lvUUID;
    QString status;              // "Converting", "Complete", ...
    QString conversionDirection; // "forward", "backward", "-none-", ...
    QString conversionProgress;  // the percentage as printed, without its percent sign

    bool operator==(const KVConversionStatus &) const = default;
};

// Reads the conversion state of every logical volume from the text listing of
// `diskutil cs list`.
//
// The listing is a tree: it is cut into one piece per volume group at every
// "|" line followed by a "+--" node, and each piece is searched as a whole for
// its first logical volume (a family's node is not one) and for the first
// "Conversion Status:", "Conversion Direction:" and "Conversion Progress:"
// lines. Older systems print the direction on a line of its own; newer ones
// append it to the status in parentheses.
class KVConversionStatusParser
{
public:
    static QList<KVConversionStatus> parse(QStringView listing);
};
