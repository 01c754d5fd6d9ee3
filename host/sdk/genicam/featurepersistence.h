#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Kalto {

class INodeMap;

/// One line of feature-persistence text that loading did not apply.
struct SRejectedLine {
    size_t lineNumber = 0;  ///< 1-based
    std::string feature;    ///< empty when the line has no readable name
    std::string reason;
};

struct SLoadReport {
    size_t appliedLines = 0;
    size_t rejectedCount = 0;            ///< all rejected lines
    std::vector<SRejectedLine> rejected; ///< the first kMaxReportedLines of them
    bool ok() const { return rejectedCount == 0; }
};

/// The node map as text: header lines starting with "#", then one
/// "Name<TAB>Value" line per persistable feature in registration order. A
/// selector with selected features is written as a block at its own position:
/// for each available entry a "Selector<TAB>Entry" line followed by the
/// selected features' values for that entry, and finally the selector's
/// current entry again so that loading leaves the selection as it was.
///
/// The header's third line, "# Lines<TAB>N", counts the text's lines, and the
/// last one is "# End": a text that declares its length but ends before its
/// end marker is reported as truncated (its last line, when the cut fell
/// inside it, rejected rather than applied). Texts without the count load as
/// before.
///
/// Persistable: value nodes flagged persistent and writable at save time.
/// Floats are written in the shortest form that reads back to the same double,
/// integers in decimal, booleans as 1/0, enumerations by symbolic name,
/// strings with \\, \t, \n, \r and \xHH escapes (every '#' escaped, so that
/// only header lines hold one).
///
/// Loading applies each valid line in order and rejects, with its line number
/// and reason: lines without a tab, unknown features, commands, features that
/// are not writable, values that do not parse as the feature's type, numbers
/// outside the feature's range (rejected, not clipped: a file that disagrees
/// with the camera's limits comes from another camera or is damaged), unknown
/// or unavailable entries, text that is not UTF-8 or holds control bytes,
/// lines over kMaxLineBytes, and values for features whose selector line was
/// rejected. Empty lines and lines starting with "#" are skipped. The whole
/// load holds the node map's lock and runs in time linear in the text.
class CFeaturePersistence {
public:
    static constexpr size_t kMaxLineBytes = 1 << 20;
    static constexpr size_t kMaxReportedLines = 1000;

    static std::string Save(const INodeMap& map);
    static SLoadReport Load(INodeMap& map, std::string_view text);

    /// Exact, locale-independent number text as Save writes it.
    static std::string FormatFloat(double value);
};

}  // namespace Kalto
