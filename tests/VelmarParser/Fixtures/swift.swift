import Foundation

protocol Waterable {
    var name: String { get }
    func water(litres: Double) throws
}

struct Rose: Waterable {
    let name: String
    private(set) var height = 0

    func water(litres: Double) throws {
        guard litres > 0 else { throw GardenError.dry(name) }
        print("\(name) gets \(litres)")
    }
}

enum GardenError: Error {
    case dry(String)
}

extension Array where Element: Waterable {
    func tallest() -> Element? {
        return self.first { $0.name.count > 3 }
    }
}

let roses = [Rose(name: "Damask"), Rose(name: "Tea")]
for rose in roses where rose.height == 0 {
    do {
        try rose.water(litres: 1.5)
    } catch GardenError.dry(let name) {
        print(name)
    } catch {
        fatalError()
    }
}
