#pragma once

#include "kernel/main/command.h"
#include "kernel/main/parameter.h"
#include "kernel/main/vectorcastclass.h"
#include "kernel/util/zpointer.h"

#include <vector>

namespace qel {
namespace main {
class Event;
}
namespace commands {
namespace scene {

// measure(value) sets how many scene units make one shown unit; measure(length,[p1],[p2])
// derives it from a line of known length between two scene points.
class Measure : public main::Command
{
public:
    static const char* const CommandName;

    static main::Command* create();

    Measure();
    Measure(const Measure& other);
    ~Measure() override;

    void execute() override;

private:
    void setMeasure();
    void measureUnitLine();
    // Offers the two picked points as the line's ends in the dialog.
    void selectedPointsChanged(const main::Event* event);

    util::ZPointer<main::VectorCastClass<double>> m_CastClass;
    main::Parameter<std::vector<double>>* m_Point1;
    main::Parameter<std::vector<double>>* m_Point2;

    static bool m_Registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
