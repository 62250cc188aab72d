"""The daily input series of the model, for all measured days: {date: value}."""
import physics
import tables


def temperature():
    return tables.daily("data/oak_city_daily.csv", "temperature_degC")


def release():
    """m3/s at Roanoke Rapids."""
    cubic_feet = tables.daily("data/roanoke_rapids_daily.csv", "discharge_cfs")
    return {date: flow * physics.CUBIC_FOOT for date, flow in cubic_feet.items()}


def oxygen(water):
    """Oxygen in g/m3 as a monthly share of the saturation at the measured temperature; water: "release" or "swamp"."""
    share_at = tables.monthly(f"{water}_share")
    return {
        date: round(share_at(date) * physics.oxygen_saturation(celsius), 3)
        for date, celsius in temperature().items()
    }
