using System;
using Alias = System.Text.StringBuilder;

namespace Acme.Tools
{
    /// <summary>Does things.</summary>
    [Serializable]
    public class Widget<T> : Base<T>, IThing where T : new()
    {
        public const int Limit = 3;
        private readonly string name = "x";
        public string Name { get; set; } = "";
        public Widget(string name) : base(name) { this.name = name; }
        /// Runs it.
        [Obsolete("no")]
        public async Task<int> Run(int count,
            string label = "a") { helper.Call(count); return new Thing().Size(); }
        int Run() => 1;
        private void Broken( { }
        public delegate void Handler(int x);
    }
    internal interface IThing { void Do(); }
    public enum Color { Red, Green = 2 }
    public record Point(int X, int Y);
    public struct Pair { public int A; }
    internal sealed class Marker(int value) : Base(value);
}
