#include "calctrans.h"

#include "transmission.h"

#include <cmath>

float CalcTrans::getTrans(float envTemp, float humid, int dist) {
    return irmcore::transmission(envTemp, humid, dist);
}

float CalcTrans::calcH2OTrans(float water) { return irmcore::waterTransmission(water); }

float CalcTrans::calcCO2Trans(float km) { return irmcore::carbonDioxideTransmission(km); }

void CalcTrans::findOrderTable(int& lower, int& upper, float x) {
    if (std::isnan(x))
        return;
    const irmcore::Bracket at = irmcore::bracketOf(x);
    lower = at.lower;
    upper = at.upper;
}

double CalcTrans::getDistanceFromLine(int index) { return irmcore::breakpoint(index); }
