#include "agent/output/Output.h"
#include "agent/topics/StatePrinter.h"

namespace Agent {

namespace {

class StateDocuments final : public StatePrinter {
  public:
    explicit StateDocuments(std::ostream& out) : out_(out) {}

  private:
    /// Bytes of a document that are kept before they are written.
    static constexpr std::size_t pieceSize = std::size_t{64} << 10U;

    void printTime(const TimeRow& row) override;
    void printVrf(const VrfRow& row, const Routes& routes) override;
    void printTotals(const TotalsRow& row) override;
    void printFamily(const Routes& routes, Lanx::AddressFamily af);
    void writePiece();

    std::ostream& out_;
    std::string piece_;
    JsonWriter writer_{piece_};
};

void StateDocuments::printTime(const TimeRow& row) {
    piece_.clear();
    writer_ = JsonWriter(piece_);
    writer_.beginObject();
    TimeRow::describe(row, JsonColumns(writer_));
    writer_.key("vrfs");
    writer_.beginObject();
}

void StateDocuments::printVrf(const VrfRow& row, const Routes& routes) {
    writer_.key(row.vrf);
    writer_.beginObject();
    VrfRow::describeState(row, JsonColumns(writer_));
    printFamily(routes, Lanx::AddressFamily::ipv4);
    printFamily(routes, Lanx::AddressFamily::ipv6);
    writer_.endObject();
}

void StateDocuments::printFamily(const Routes& routes, Lanx::AddressFamily af) {
    writer_.key(Lanx::familyName(af));
    writer_.beginObject();
    for (const RouteRow& route : routes) {
        if (route.prefix.af() == af) {
            writer_.key(route.prefix.toString());
            writer_.beginObject();
            RouteRow::describeTarget(route, JsonColumns(writer_));
            writer_.endObject();
            if (piece_.size() >= pieceSize) {
                writePiece();
            }
        }
    }
    writer_.endObject();
}

void StateDocuments::printTotals(const TotalsRow& row) {
    writer_.endObject();
    TotalsRow::describe(row, JsonColumns(writer_));
    writer_.endObject();
    piece_ += '\n';
    writePiece();
    finishOutput(out_);
}

void StateDocuments::writePiece() {
    out_ << piece_;
    piece_.clear();
}

} // namespace

std::unique_ptr<StatePrinter> makeStateDocuments(std::ostream& out) {
    return std::make_unique<StateDocuments>(out);
}

} // namespace Agent
