/** Layout of the contrast table and of the table of comparisons with a control, by column, from 1. */
#pragma once

namespace korvenrg::comparisons {

/** ioContrastsStats, NbContrasts x 10, one row per pair of categories. */
enum ContrastCol
{
    kContrastDifference = 1,  ///< first category minus second
    kContrastVariance,        ///< of the difference; 0 or less: it cannot be tested
    kContrastFirstRank,       ///< rank of the first category among the sorted means
    kContrastSecondRank,
    kContrastStandardised,  ///< difference / root of its variance
    kContrastCritical,      ///< critical value on that scale
    kContrastP,
    kContrastLevel,    ///< level at which a stepwise procedure judged the row
    kContrastFirstId,  ///< identifier of the first category, from 1
    kContrastSecondId,
    kContrastCols = kContrastSecondId
};

/** The table of plain contrast tests, iNbContrasts x 7: columns 1, 2 and 5 as above, and the p-value. */
enum TestedContrastCol
{
    kTestedContrastP = 6,
    kTestedContrastCols
};

/** oMat, nnm1 x 7, one row per category other than the control. */
enum ControlCol
{
    kControlDifference = 1,  ///< control minus other
    kControlStandardised,
    kControlCritical,
    kControlCriticalDifference,
    kControlP,
    kControlId,  ///< identifier of the control
    kControlOtherId,
    kControlCols = kControlOtherId
};

/** Verdicts of all tests. */
enum Verdict
{
    kNotTestable = -1,
    kNotSignificant = 0,
    kSignificant = 1
};

}  // namespace korvenrg::comparisons
