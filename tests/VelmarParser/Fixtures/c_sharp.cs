using System;
using System.Collections.Generic;

namespace Garden;

public record Plant(string Name, int Height);

public sealed class Bed<T> where T : Plant
{
    private readonly List<T> plants = new();

    public event EventHandler? Watered;

    public int Count => plants.Count;

    public async Task<int> WaterAsync(string name)
    {
        foreach (var plant in plants)
        {
            if (plant is { Name: var found } && found == name)
            {
                await Task.Delay(10);
                Watered?.Invoke(this, EventArgs.Empty);
            }
        }
        return Count switch { 0 => -1, > 10 => 10, _ => Count };
    }

    public override string ToString() => $"A bed of {Count} plants";
}
