// First steps in C#: fills three compounds, prints a table of properties, flashes a mixture of them by Raoult's law,
// stores the result in a collection of phases, reads it back, and writes the last compound as XML.
//   FirstSteps.exe DATABASE-DIRECTORY XML-FILE
using System;
using System.Globalization;
using System.IO;
using System.Linq;

static class FirstSteps
{
    const double T = 330, P = 250;
    const int NoExtrapolation = 0, Feed = 2, Vapour = 3, Liquid = 4, Active = 1;

    static dynamic Create(string program) => Activator.CreateInstance(Type.GetTypeFromProgID(program, true));

    static void Store(dynamic phase, double fraction, double[] composition)
    {
        phase.Temperature = T;
        phase.Pressure = P;
        phase.PhaseStatus = Active;
        phase.PhaseFraction = fraction;
        phase.MolarComposition = composition;
    }

    [STAThread]
    static void Main(string[] arguments)
    {
        CultureInfo.CurrentCulture = CultureInfo.InvariantCulture;
        dynamic compounds = Create("COQSCompoundCollection.COQSCompoundCollection.1"), compound = null;
        foreach (int number in new[] { 3, 5, 7 })
        {
            compound = Create("COQSCompound.COQSCompound.1");
            compound.Init(arguments[0], number);
            compounds.AddCompound(compound);
        }

        // The last argument of a property receives its dependency word, which is not wanted here.
        var K = new double[3];
        for (int i = 0; i < 3; ++i)
        {
            compound = compounds.Compound(i);
            double TC = compound.TC(T, P, NoExtrapolation, 0), PC = compound.PC(T, P, NoExtrapolation, 0);
            double VP = compound.VP(T, P, NoExtrapolation, 0);
            K[i] = VP / P;
            Console.WriteLine($"{compound.Name} {compound.CASN}: TC {Math.Round(TC, 2)} K, PC {Math.Round(PC, 2)} kPa, " +
                              $"VP {Math.Round(VP, 2)} kPa");
        }

        // The vapour fraction where the mole fractions of both phases add up to one, by bisection.
        double[] z = { 0.3, 0.4, 0.3 };
        double low = 0, high = 1, fraction = 0;
        while (high - low > 1e-12)
        {
            fraction = (low + high) / 2;
            double sum = Enumerable.Range(0, 3).Sum(i => z[i] * (K[i] - 1) / (1 + fraction * (K[i] - 1)));
            if (sum > 0) low = fraction; else high = fraction;
        }
        double[] x = z.Select((feed, i) => feed / (1 + fraction * (K[i] - 1))).ToArray();
        double[] y = x.Select((liquid, i) => K[i] * liquid).ToArray();

        dynamic phases = Create("COQSPhaseCollection.COQSPhaseCollection.1");
        phases.RegisterProperties(Create("QsHostKit.PropertyRegistry.1"));
        phases.Finalize(compounds, 2, 1);
        phases.NumberOfEquilibriumPhases = 2;
        phases.GetEquilibriumPhase(0).PhaseType = Vapour;
        phases.GetEquilibriumPhase(1).PhaseType = Liquid;
        Store(phases.LocatePhase(Feed, 0), 1, z);
        Store(phases.LocatePhase(Vapour, 0), fraction, y);
        Store(phases.LocatePhase(Liquid, 0), 1 - fraction, x);

        for (int i = 0; i < phases.NumberOfActivePhases; ++i)
        {
            dynamic phase = phases.GetActivePhase(i), composition = phase.MolarComposition;
            var rounded = Enumerable.Range(0, 3).Select(j => Math.Round((double)composition.IthValue(j), 4));
            Console.WriteLine($"phase of kind {phase.PhaseType}: fraction {Math.Round((double)phase.PhaseFraction, 4)}, " +
                              $"composition {string.Join(" ", rounded)}");
        }

        File.WriteAllText(arguments[1], (string)compound.StoreAsXML());
    }
}
