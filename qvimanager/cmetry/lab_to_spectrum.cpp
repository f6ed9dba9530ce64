#include "qvimanager/cmetry/lab_to_spectrum.h"

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/linalg.h"

#include <cmath>

namespace CMetry {

namespace {

constexpr int kPoints = QVSpectrum::NumberOfDataPoints;

// XYZ of the values under the conditions.
void TristimulusOf(const float (&values)[kPoints], const QVMeasureConditions& conditions, float (&xyz)[3])
{
    QVColorVector vector;
    CMetryCalculator::GetVector_CIEXYZ(QVSpectrum(values, conditions), conditions, vector);
    for (short axis = 0; axis < 3; ++axis) {
        xyz[axis] = vector[axis];
    }
}

} // namespace

bool Lab2Spec::GetSpectrum(const QVColorVector& lab, QVSpectrum& spectrum, double tolerance, bool useDeltaE94,
                           int maxRounds)
{
    const QVMeasureConditions conditions(lab.GetMeasureConditions());
    bool result = false;

    // The response of every point: XYZ of a unit impulse there.
    float response[kPoints][3];
    float norm[kPoints];
    for (int i = 0; i < kPoints; ++i) {
        float impulse[kPoints] = {};
        impulse[i] = 1.0f;
        TristimulusOf(impulse, conditions, response[i]);
        norm[i] = LinAlg::BetragV(response[i], 3);
    }

    QVLab wanted;
    wanted = lab;
    QVColorVector targetVector;
    CMetryCalculator::GetVector_CIEXYZ(wanted, targetVector);
    float target[3] = {targetVector[0], targetVector[1], targetVector[2]};

    float s[kPoints];
    LinAlg::InitV(s, 0.5f, kPoints);
    float current[3];
    TristimulusOf(s, conditions, current);
    float diff[3];
    for (int axis = 0; axis < 3; ++axis) {
        if (target[axis] < 0.0f) {
            target[axis] = 0.0f;
        }
        diff[axis] = target[axis] - current[axis];
    }

    double dist = 1e+38;
    int rounds = 0;
    for (;;) {
        ++rounds;
        double best = 1e+38;
        int bestPoint = kPoints;
        double bestCosine = 0.0;
        const double length = LinAlg::BetragV(diff, 3);
        for (int i = 0; i < kPoints; ++i) {
            const float dot = LinAlg::DotProd(response[i], diff, 3);
            // A point at a limit is never chosen to go past it.
            const bool mayMove = dot >= 0.0f ? s[i] < 1.0f : s[i] > 0.0f;
            if (!mayMove) {
                continue;
            }
            const double denominator = norm[i] * length;
            double cosine = denominator > 0.0 ? dot / denominator : 0.0;
            if (cosine < -1.0) {
                cosine = -1.0;
            }
            if (cosine > 1.0) {
                cosine = 1.0;
            }
            const double angle = std::acos(std::fabs(cosine));
            // Strict: on a tie the lowest point stays.
            if (angle < best) {
                best = angle;
                bestPoint = i;
                bestCosine = cosine;
            }
        }
        if (bestPoint < kPoints && norm[bestPoint] > 0.0f) {
            s[bestPoint] = static_cast<float>(s[bestPoint] + bestCosine * length / norm[bestPoint]);
            if (s[bestPoint] < 0.0f) {
                s[bestPoint] = 0.0f;
            }
            if (s[bestPoint] > 1.0f) {
                s[bestPoint] = 1.0f;
            }
        }
        TristimulusOf(s, conditions, current);
        for (int axis = 0; axis < 3; ++axis) {
            diff[axis] = target[axis] - current[axis];
        }
        const double previous = dist;
        dist = LinAlg::DotProd(diff, diff, 3);
        bool reached = false;
        if (dist < 0.001) {
            QVColorVector xyz(current[0], current[1], current[2], conditions);
            QVLab found;
            CMetryCalculator::GetVector_CIELab(xyz, found);
            const float difference = useDeltaE94 ? CMetryCalculator::GetDeltaE_94(found, wanted, 1.0f, 1.0f, 1.0f)
                                                 : CMetryCalculator::GetDeltaE_CIELAB(found, wanted);
            if (difference < tolerance) {
                result = true;
                reached = true;
            }
        }
        // No measurable gain, or too many rounds: a failure, also when the
        // tolerance was reached in this very round.
        if (previous - dist < 1e-15 || rounds > maxRounds) {
            result = false;
            break;
        }
        if (reached) {
            break;
        }
    }
    lastRounds = rounds;
    spectrum = QVSpectrum(s, conditions);
    return result;
}

Diagnostics::String Lab2Spec::GetValueString() const
{
    return Diagnostics::String();
}

} // namespace CMetry
